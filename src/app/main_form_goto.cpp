// The window side of goto, search and measure: the four actions open the tool
// window on their page; it keeps its place and pages in [GOWindow].

#include <QAction>

#include "app/action_registry.h"
#include "app/goto_form.h"
#include "app/main_form.h"
#include "config/program_config.h"
#include "present/grid/record_grid.h"

namespace kestrel {

TFormGoto &TFormMain::gotoForm()
{
    if (FormGoto == nullptr) {
        FormGoto = new TFormGoto(*prompter_, *DrawGrid1, [this] { return recordFile(); }, this);
        const ToolWindowPlacement &p = config_->goWindow;
        if (p.Left != 0 || p.Top != 0)
            FormGoto->move(p.Left, p.Top);
        FormGoto->setPageIndexes(config_->SearchPageIndex, config_->ControlSearchPageIndex);
        connect(DrawGrid1, &grid::RecordGrid::recordCountChanged, FormGoto, [this] {
            if (FormGoto->isVisible() && !FormGoto->searching())
                FormGoto->recordingChanged();
        });
    }
    return *FormGoto;
}

void TFormMain::connectGotoForm()
{
    const std::pair<const char *, int> pages[] = {{"actSearch", GotoPage::Search},
                                                  {"actDeltaTime", GotoPage::Delta},
                                                  {"actGotoTriggerPoint", GotoPage::TriggerPoint},
                                                  {"actGotoMP", GotoPage::Mp}};
    for (auto [name, page] : pages)
        connect(ActionManager1->action(QString::fromLatin1(name)), &QAction::triggered, this,
                [this, page = page] { gotoForm().showPage(page); });
}

void TFormMain::saveGotoForm()
{
    if (FormGoto == nullptr)
        return; // never opened: what was read stays as it was
    const QPoint at = FormGoto->pos();
    config_->goWindow.Left = at.x();
    config_->goWindow.Top = at.y();
    config_->goWindow.Visible = FormGoto->isVisible();
    config_->SearchPageIndex = FormGoto->pageIndex();
    config_->ControlSearchPageIndex = FormGoto->searchPageIndex();
}

} // namespace kestrel
