#include "present/grid/grid_colours.h"

namespace kestrel::grid {

namespace {

void SetMark(GridColours &c, MarkStyle style, QColor back, QColor text)
{
    c.markBack[static_cast<std::size_t>(MarkIndex(style))] = back;
    c.markText[static_cast<std::size_t>(MarkIndex(style))] = text;
}

} // namespace

GridColours LightGridColours()
{
    GridColours c;
    c.d2RowTint = QColor(246, 248, 255);
    c.gridLine = QColor(208, 208, 208);
    c.description = QColor(21, 67, 140);
    c.currentCell = QColor(200, 221, 247);
    c.errorBack = QColor(211, 47, 47);
    c.errorText = QColor(255, 255, 255);
    c.waveLine = QColor(128, 128, 128);
    c.waveFill = QColor(192, 192, 192);
    c.markBack.fill(QColor(255, 255, 255));
    c.markText.fill(QColor(0, 0, 0));
    SetMark(c, MarkStyle::SystemStart, QColor(200, 230, 201), QColor(27, 94, 32));
    SetMark(c, MarkStyle::SystemStop, QColor(255, 205, 210), QColor(183, 28, 28));
    SetMark(c, MarkStyle::SystemOther, QColor(207, 216, 220), QColor(38, 50, 56));
    SetMark(c, MarkStyle::TriggerStart, QColor(255, 224, 178), QColor(154, 58, 12));
    SetMark(c, MarkStyle::TriggerStop, QColor(225, 190, 231), QColor(74, 20, 140));
    SetMark(c, MarkStyle::TriggerDetected, QColor(255, 249, 196), QColor(110, 100, 20));
    return c;
}

GridColours DarkGridColours()
{
    // Quiet tints on the dark base and light, unsaturated texts: nothing glares after
    // hours, and every badge still says its kind by its hue.
    GridColours c;
    c.d2RowTint = QColor(35, 40, 50);
    c.gridLine = QColor(58, 63, 71);
    c.description = QColor(138, 180, 248);
    c.currentCell = QColor(40, 66, 102);
    c.errorBack = QColor(211, 47, 47);
    c.errorText = QColor(255, 255, 255);
    c.waveLine = QColor(160, 170, 184);
    c.waveFill = QColor(66, 79, 99);
    c.markBack.fill(QColor(26, 29, 34));
    c.markText.fill(QColor(220, 225, 232));
    SetMark(c, MarkStyle::SystemStart, QColor(27, 61, 34), QColor(165, 214, 167));
    SetMark(c, MarkStyle::SystemStop, QColor(74, 28, 31), QColor(239, 154, 154));
    SetMark(c, MarkStyle::SystemOther, QColor(47, 58, 64), QColor(207, 216, 220));
    SetMark(c, MarkStyle::TriggerStart, QColor(74, 46, 18), QColor(255, 204, 128));
    SetMark(c, MarkStyle::TriggerStop, QColor(59, 34, 73), QColor(206, 147, 216));
    SetMark(c, MarkStyle::TriggerDetected, QColor(63, 58, 20), QColor(255, 245, 157));
    return c;
}

bool IsDarkBase(const QColor &base) { return base.lightness() < 128; }

} // namespace kestrel::grid
