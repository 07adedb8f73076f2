#include "app/dialog_buttons.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QPushButton>

#include "app/help_request.h"

namespace kestrel {

DialogButtons MakeDialogButtons(QDialog *dialog, const char *cancelName)
{
    auto button = [dialog](const char *name) {
        auto *b = new QPushButton(dialog);
        b->setObjectName(name);
        return b;
    };
    DialogButtons b{button("btnOK"), button(cancelName), button("btnHelp"), new QHBoxLayout};
    b.ok->setDefault(true);
    b.help->setAutoDefault(false);
    QObject::connect(b.help, &QPushButton::clicked, dialog, [dialog] { ShowHelpFor(dialog); });
    InstallHelpKey(dialog);
    b.row->addStretch(1);
    b.row->addWidget(b.ok);
    b.row->addWidget(b.cancel);
    b.row->addWidget(b.help);
    return b;
}

} // namespace kestrel
