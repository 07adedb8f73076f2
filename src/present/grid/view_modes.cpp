#include "present/grid/view_modes.h"

#include "present/grid/grid_layout.h"

namespace kestrel::grid {

bool GridModes::SelectView(int view)
{
    if (!IsGridView(view))
        return false;
    panel.SwitchView(view);
    return true;
}

void GridModes::ClickTimeAbsolute() { timeMode_ = kTimeAbsolute; }
void GridModes::ClickTimeRelative(bool down) { timeMode_ = down ? kTimeRelative : kTimeAbsolute; }
void GridModes::ClickTimeDelta(bool down) { timeMode_ = down ? kTimeDelta : kTimeAbsolute; }

void GridModes::SetTimeMode(int mode)
{
    timeMode_ = (mode == kTimeRelative || mode == kTimeDelta) ? mode : kTimeAbsolute;
}

void GridModes::SetGridLines(GridLines lines)
{
    switch (lines) {
    case GridLines::All: gridLines_ = {true, true}; break;
    case GridLines::Horizontal: gridLines_ = {false, true}; break;
    case GridLines::Vertical: gridLines_ = {true, false}; break;
    case GridLines::None: gridLines_ = {false, false}; break;
    }
}

} // namespace kestrel::grid
