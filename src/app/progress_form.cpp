#include "app/progress_form.h"

#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

#include "base/string_table.h"

namespace kestrel {

TFormProgress::TFormProgress(QWidget *parent) : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
{
    setObjectName("TFormProgress");
    setWindowTitle(QString::fromStdString(Str(1)));
    lblProgress = new QLabel(this);
    lblProgress->setObjectName("lblProgress");
    pbProgress = new QProgressBar(this);
    pbProgress->setObjectName("pbProgress");
    pbProgress->setRange(0, 100);
    auto *box = new QVBoxLayout(this);
    box->setContentsMargins(18, 14, 18, 14);
    box->addWidget(lblProgress);
    box->addWidget(pbProgress);
    setMinimumWidth(380);
}

void TFormProgress::step(const QString &text, int percent)
{
    lblProgress->setText(text);
    pbProgress->setValue(percent);
    // Paint now: the steps run on the GUI thread one after the other.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

QString TFormProgress::text() const { return lblProgress->text(); }
int TFormProgress::percent() const { return pbProgress->value(); }

} // namespace kestrel
