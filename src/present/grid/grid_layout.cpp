#include "present/grid/grid_layout.h"

#include <algorithm>
#include <array>

#include "present/column_texts.h"
#include "present/grid/grid_texts.h"
#include "base/string_table.h"

namespace kestrel::grid {

namespace {

// Vertical view: mark, number, time, D1, D2, six levels, two error columns;
// the description (column 13) takes what is left.
// The error columns leave a few pixels beside "D2Err" / "RxErr" for wider fonts.
constexpr std::array<int, 13> kVerticalWidths = {100, 80, 150, 30, 30, 30, 30, 30, 30, 30, 30, 40, 40};
constexpr int kVerticalReserve = 16;

constexpr int kLineNameWidth = 50;
constexpr int kNumberWidth = 80;
constexpr int kDataWidth = 15;
constexpr int kDumpSeparatorWidth = 12;

// Column headers 3..12 of the vertical view in both naming sets.
constexpr std::array<std::array<const char *, 2>, 10> kSignalHeaders = {{
    {"D1", "Tx"}, {"D2", "Rx"}, {"S1", "DTR"}, {"M1", "DSR"}, {"S2", "RTS"},
    {"M2", "CTS"}, {"M5", "DCD"}, {"M3", "RNG"}, {"D1Err", "TxErr"}, {"D2Err", "RxErr"},
}};

constexpr char kHexDigits[] = "0123456789ABCDEF";

// Numeric dump columns are as wide as the secondary mode's longest text.
int DumpNumericWidth(int secondaryMode)
{
    switch (secondaryMode) {
    case 4: // DEC "255"
    case 5: // OCT "377"
        return 26;
    case 6: // BIN "11111111"
        return 60;
    default: // HEX "FF"
        return 20;
    }
}

// The width the user dragged into slot, else the built-in one.
int UserOr(const UserWidths &user, int slot, int builtIn)
{
    const int w = user[static_cast<std::size_t>(slot)];
    return w > 0 ? w : builtIn;
}

// Column 0 (line name) or 1 (number) of the data-only and dump views.
int LeadingColumnWidth(const UserWidths &user, int col, int zoomPercent)
{
    return col == 0 ? UserOr(user, 0, Zoomed(kLineNameWidth, zoomPercent))
                    : UserOr(user, 1, Zoomed(kNumberWidth, zoomPercent));
}

} // namespace

bool IsGridView(int view) { return view == kViewVertical || view == kViewDataOnly || view == kViewDataDump; }

int ByteCellWidth(int view, int charMode)
{
    if (view == kViewDataOnly) {
        switch (charMode) {
        case 4: // DEC "255"
        case 5: // OCT "377"
            return 22;
        case 6: // BIN "11111111"
            return 52;
        default: // a character or two hex digits
            return kDataWidth;
        }
    }
    if (view == kViewDataDump)
        return kDataWidth; // its byte columns always show characters
    return charMode == 6 ? 60 : kVerticalWidths[3];
}

int ZoomStep(int zoomPercent, int steps)
{
    return std::clamp(zoomPercent + steps * kZoomStep, kZoomMin, kZoomMax);
}

int UserWidthSlot(int view, int col)
{
    if (col < 0)
        return -1;
    switch (view) {
    case kViewDataOnly:
        return std::min(col, 2);
    case kViewDataDump:
        return col < 2 ? col : col < 18 ? 2 : col == 18 ? 3 : 4;
    default:
        return col < static_cast<int>(kVerticalWidths.size()) ? col : -1;
    }
}

ViewShape ShapeForView(int view, int clientWidth, int charMode, int zoomPercent, const UserWidths &user)
{
    // Byte cells take a dragged width, but never less than the character mode needs.
    ViewShape s;
    switch (view) {
    case kViewDataOnly: {
        const int need = Zoomed(ByteCellWidth(kViewDataOnly, charMode), zoomPercent);
        const int cell = std::max<int>(need, user[2]);
        const int fixed = LeadingColumnWidth(user, 0, zoomPercent) + LeadingColumnWidth(user, 1, zoomPercent);
        const int columns = std::max(3, (clientWidth - fixed) / std::max(1, cell) + 2);
        s = {kViewDataOnly, columns, columns - 2, 2, cell};
        break;
    }
    case kViewDataDump:
        s = {kViewDataDump, 35, 16, 2, std::max<int>(Zoomed(kDataWidth, zoomPercent), user[4])};
        break;
    default:
        s = {kViewVertical, 14, 1, 1, Zoomed(ByteCellWidth(kViewVertical, charMode), zoomPercent)};
        break;
    }
    s.zoomPercent = zoomPercent;
    s.rowHeight = Zoomed(kRowHeight, zoomPercent);
    s.userWidths = user;
    return s;
}

int ColumnWidth(const ViewShape &shape, int col, int clientWidth, int secondaryMode)
{
    if (col < 0 || col >= shape.columns)
        return 0;
    switch (shape.view) {
    case kViewDataOnly:
    case kViewDataDump: {
        if (col < 2)
            return LeadingColumnWidth(shape.userWidths, col, shape.zoomPercent);
        if (shape.view == kViewDataOnly)
            return shape.byteWidth;
        if (col < 18) // a number cell holds the secondary mode's whole value
            return std::max<int>(shape.userWidths[2], Zoomed(DumpNumericWidth(secondaryMode), shape.zoomPercent));
        return col == 18 ? UserOr(shape.userWidths, 3, Zoomed(kDumpSeparatorWidth, shape.zoomPercent)) : shape.byteWidth;
    }
    default: {
        auto fixed = [&shape](int c) {
            if (c == 3 || c == 4) // a dragged byte column still holds the mode's whole value
                return std::max<int>(shape.userWidths[static_cast<std::size_t>(c)], shape.byteWidth);
            return UserOr(shape.userWidths, c, Zoomed(kVerticalWidths[static_cast<std::size_t>(c)], shape.zoomPercent));
        };
        if (col < static_cast<int>(kVerticalWidths.size()))
            return fixed(col);
        int used = 0;
        for (int c = 0; c < static_cast<int>(kVerticalWidths.size()); ++c)
            used += fixed(c);
        return clientWidth - used - kVerticalReserve;
    }
    }
}

int ColumnLeft(const ViewShape &shape, int col, int clientWidth, int secondaryMode)
{
    int left = 0;
    for (int c = 0; c < col && c < shape.columns; ++c)
        left += std::max(0, ColumnWidth(shape, c, clientWidth, secondaryMode));
    return left;
}

int TotalWidth(const ViewShape &shape, int clientWidth, int secondaryMode)
{
    return ColumnLeft(shape, shape.columns, clientWidth, secondaryMode);
}

int SlotOffset(int view, int col)
{
    switch (view) {
    case kViewDataOnly:
        return col >= 3 ? col - 2 : 0;
    case kViewDataDump:
        // Column 18 maps one slot before the row's first MP; kept that way on purpose.
        if (col >= 18)
            return col - 19;
        return col >= 3 ? col - 2 : 0;
    default:
        return 0;
    }
}

std::int64_t CellSlot(const ViewShape &shape, int col, int row)
{
    const std::int64_t line = (row - 1) / std::max(1, shape.rowsPerLine);
    return line * shape.mpsPerRow + 1 + SlotOffset(shape.view, col);
}

int DataRowsFor(const ViewShape &shape, int viewportHeight)
{
    const int rpl = std::max(1, shape.rowsPerLine);
    const int height = std::max(1, shape.rowHeight);
    const int rows = (viewportHeight - kHeaderRows * height) / height;
    return std::max(rpl, rows / rpl * rpl);
}

std::int64_t PageMps(const ViewShape &shape, int dataRows)
{
    return static_cast<std::int64_t>(dataRows / std::max(1, shape.rowsPerLine)) * shape.mpsPerRow;
}

CellInfo RoleOf(const ViewShape &shape, int col, int row)
{
    CellInfo info;
    if (row < 1 || col < 0 || col >= shape.columns)
        return info;
    if (shape.view == kViewVertical) {
        switch (col) {
        case 0: info.role = CellRole::MarkTrigger; break;
        case 1: info.role = CellRole::Number; break;
        case 2: info.role = CellRole::Time; break;
        case 3: info.role = CellRole::DataD1; break;
        case 4: info.role = CellRole::DataD2; break;
        case 11: info.role = CellRole::ErrorsD1; break;
        case 12: info.role = CellRole::ErrorsD2; break;
        case 13: info.role = CellRole::Description; break;
        default:
            if (col >= 5 && col <= 10) {
                info.role = CellRole::Signal;
                info.signal = static_cast<Signal>(col - 5);
            }
        }
        return info;
    }
    info.d2 = (row - 1) % std::max(1, shape.rowsPerLine) == 1;
    if (col == 0) {
        info.role = CellRole::LineName;
    } else if (col == 1) {
        info.role = CellRole::Number;
    } else if (shape.view == kViewDataDump && col < 18) {
        info.role = CellRole::DumpNumeric;
    } else if (shape.view == kViewDataDump && col == 18) {
        info.role = CellRole::DumpSeparator;
    } else {
        info.role = info.d2 ? CellRole::DataD2 : CellRole::DataD1;
    }
    return info;
}

const char *CircuitName(bool d2, int namingSet)
{
    return kSignalHeaders[d2 ? 1 : 0][namingSet == kNamingPin ? 1 : 0];
}

std::string HeaderText(const ViewShape &shape, int col, int namingSet, int timeMode, int lang)
{
    const int naming = namingSet == kNamingPin ? 1 : 0;
    if (shape.view == kViewVertical) {
        switch (col) {
        case 0: return StrIn(ColumnText::MarkTrigger, lang);
        case 1: return StrIn(ColumnText::EventNo, lang);
        case 2: {
            const int mode = timeMode >= 0 && timeMode <= 2 ? timeMode : 0;
            return StrIn(ColumnText::DateTime, lang) + StrIn(ColumnText::TimeModeSuffix + mode, lang);
        }
        case 13: return StrIn(ColumnText::Description, lang);
        default:
            if (col >= 3 && col <= 12)
                return kSignalHeaders[static_cast<std::size_t>(col - 3)][static_cast<std::size_t>(naming)];
            return std::to_string(col) + "Err";
        }
    }
    if (col == 0)
        return StrIn(txt::kHeaderLine, lang);
    if (col == 1)
        return StrIn(ColumnText::EventNo, lang);
    if (shape.view == kViewDataOnly) {
        if (col > shape.mpsPerRow + 2)
            return {};
        // Ruler: the tens every ten columns, "+" at the fives, "-" between.
        const int k = col - 1;
        if (k % 10 == 0)
            return std::to_string(col / 10);
        return k % 5 == 0 ? "+" : "-";
    }
    // Dump: byte offsets over the numeric block, one hex digit per text column.
    if (col < 18)
        return std::string("+") + kHexDigits[col - 2];
    if (col == 18)
        return "|";
    return std::string(1, kHexDigits[col - 19]);
}

} // namespace kestrel::grid
