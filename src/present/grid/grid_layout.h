#pragma once
// Pixel-free layout of the record grid: which views exist, how many columns
// and MPs a grid row holds, the column widths, the header texts and the
// mapping from a grid cell to a fetch-buffer slot. Row 0 is the fixed header;
// data rows start at 1. Slot 0 holds the MP at the grid's scroll position,
// row 1 shows slot 1, so every shown MP has its predecessor in the buffer.

#include <array>
#include <cstdint>
#include <string>

namespace kestrel::grid {

inline constexpr int kViewVertical = 1;
// The horizontal view has a button but does not exist: it is never shown.
inline constexpr int kViewHorizontal = 2;
inline constexpr int kViewDataOnly = 3;
inline constexpr int kViewDataDump = 4;

inline constexpr int kRowHeight = 16;   // DefaultRowHeight of the grid
inline constexpr int kHeaderRows = 1;   // the fixed row 0

// Signal naming sets of the column headers.
inline constexpr int kNamingCircuit = 0; // D1, D2, S1, ...
inline constexpr int kNamingPin = 1;     // Tx, Rx, DTR, ...

[[nodiscard]] bool IsGridView(int view);

// Columns, MPs per grid row and grid rows per line of one view at one width.
struct ViewShape {
    int view = kViewVertical;
    int columns = 14;
    int mpsPerRow = 1;
    int rowsPerLine = 1;
    // Width of a byte cell: the data-only view's data columns, the vertical view's D1
    // and D2. Wide enough for the character mode's longest text (BIN: eight digits).
    int byteWidth = 15;
    // Widths the user dragged, by slot (UserWidthSlot; 0: the built-in width).
    std::array<std::int16_t, 13> userWidths{};
    // The grid's zoom (font size setting): built-in widths and the row height grow with it.
    int zoomPercent = 100;
    int rowHeight = kRowHeight;
    friend bool operator==(const ViewShape &, const ViewShape &) = default;
};

// An unknown view number gets the vertical shape. The data-only view keeps at
// least one data column however narrow the window is, so that it still scrolls;
// its column count follows from the byte cell width of charMode.
using UserWidths = std::array<std::int16_t, 13>;
[[nodiscard]] ViewShape ShapeForView(int view, int clientWidth, int charMode = 1, int zoomPercent = 100,
                                     const UserWidths &user = {});
// Which user width sizes column col: in the vertical view each of columns 0..12 its
// own; in the data-only view 0 the line name, 1 the number, 2 every data cell; in
// the dump 0, 1, 2 every number cell, 3 the separator, 4 every character cell.
// -1: the column follows from the others (the vertical view's description).
[[nodiscard]] int UserWidthSlot(int view, int col);
// The zoom steps of the font size setting (percent) and one step up or down from a value.
inline constexpr int kZoomMin = 70, kZoomMax = 200, kZoomStep = 10;
[[nodiscard]] int ZoomStep(int zoomPercent, int steps);
// A length of the grid at 100 % scaled to zoomPercent.
[[nodiscard]] constexpr int Zoomed(int length, int zoomPercent) { return (length * zoomPercent + 50) / 100; }
// The byte cell width a view gives a character mode: a cell never shows less than
// the whole value. Two hex digits fit 15 px in a smaller font; three decimal or
// octal digits and eight binary ones do not, so those cells are wider (a departure
// from a fixed 15 px data cell, made so that 0D never reads as 0C).
[[nodiscard]] int ByteCellWidth(int view, int charMode);

// Width in pixels of column col. In the vertical view the description column
// takes the rest of the client width and may come out negative in a narrow
// window; painters clamp it, the layout reports it as computed.
// secondaryMode sizes the numeric columns of the dump view.
[[nodiscard]] int ColumnWidth(const ViewShape &shape, int col, int clientWidth, int secondaryMode);
// Left edge of column col (sum of the clamped widths before it).
[[nodiscard]] int ColumnLeft(const ViewShape &shape, int col, int clientWidth, int secondaryMode);
[[nodiscard]] int TotalWidth(const ViewShape &shape, int clientWidth, int secondaryMode);

// Offset o added to a row's first slot for column col.
[[nodiscard]] int SlotOffset(int view, int col);
// Fetch-buffer slot shown by the cell (col, row), row >= 1.
[[nodiscard]] std::int64_t CellSlot(const ViewShape &shape, int col, int row);

// Data rows that fit a viewport of the given height under the header; a whole
// number of lines (pairs of rows in the data views), at least one line.
[[nodiscard]] int DataRowsFor(const ViewShape &shape, int viewportHeight);
// MPs one page of dataRows grid rows shows: the scroll bar's large change.
[[nodiscard]] std::int64_t PageMps(const ViewShape &shape, int dataRows);
// MPs one grid line shows: the scroll bar's small change.
[[nodiscard]] inline std::int64_t StepMps(const ViewShape &shape) { return shape.mpsPerRow; }

// What a cell of a data row stands for.
enum class CellRole {
    Empty,
    MarkTrigger,  // vertical view column 0
    Number,       // MP number in decimal
    Time,         // time text of the current time mode
    DataD1,       // a D1 byte in the character mode
    DataD2,
    Signal,       // a level waveform; signal tells which
    ErrorsD1,     // PE/FE/LE markers
    ErrorsD2,
    Description,
    LineName,     // data views column 0: the circuit of this row
    DumpNumeric,  // dump view: a byte in the secondary mode
    DumpSeparator // dump view column 18 (shows the slot before the row)
};

// The six level columns in the order of the vertical view.
enum class Signal : int { S1 = 0, M1, S2, M2, M5, M3 };

struct CellInfo {
    CellRole role = CellRole::Empty;
    bool d2 = false;          // data views: the row of circuit D2
    Signal signal = Signal::S1;
};

[[nodiscard]] CellInfo RoleOf(const ViewShape &shape, int col, int row);

// Header text of column col (row 0) in the language offset lang (0 or 10000).
[[nodiscard]] std::string HeaderText(const ViewShape &shape, int col, int namingSet, int timeMode, int lang);
// Name of circuit D1 or D2 in a naming set ("D1"/"Tx", "D2"/"Rx").
[[nodiscard]] const char *CircuitName(bool d2, int namingSet);

// Pixel offsets of texts inside a cell.
inline constexpr int kHeaderTextDx = 5, kHeaderTextDy = 4;
inline constexpr int kRulerTextDx = 2, kRulerTextDy = 2;
inline constexpr int kCellTextDx = 2, kCellTextDy = 2;

} // namespace kestrel::grid
