#pragma once
// Numbers of the string-table texts the record grid uses (German numbers;
// English lives under number + 10000).

namespace kestrel::grid::txt {

// The vertical view's column names are shared with the export (ColumnText in
// present/column_texts.h); only the data views' first header is the grid's own.
inline constexpr int kHeaderLine = 7707;

// Box of the horizontal view button (that view does not exist).
inline constexpr int kHorizontalTitle = 7708;
inline constexpr int kHorizontalText = 7709;

// Copy item of the grid's popup menu and the text its action sets.
inline constexpr int kCopyItem = 7710;
inline constexpr int kCopyExecuted = 7711;

// Status line.
inline constexpr int kStatusMp = 7730;
inline constexpr int kStatusNoRecord = 7731;
inline constexpr int kStatusNoMp = 7732;

// A path that names no plain file (a folder, a pipe, a device).
inline constexpr int kNotARecordFile = 7733;

} // namespace kestrel::grid::txt
