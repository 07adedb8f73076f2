#pragma once
// Numbers of the string-table texts the record grid uses (German numbers;
// English lives under number + 10000).

namespace kestrel::grid::txt {

inline constexpr int kHeaderMarkTrigger = 7700;
inline constexpr int kHeaderEventNo = 7701;
inline constexpr int kHeaderDateTime = 7702;
inline constexpr int kTimeSuffixAbsolute = 7703;
inline constexpr int kTimeSuffixRelative = 7704;
inline constexpr int kTimeSuffixDelta = 7705;
inline constexpr int kHeaderDescription = 7706;
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

// Hints of the view buttons.
inline constexpr int kHintViewVertical = 7740;
inline constexpr int kHintViewHorizontal = 7741;
inline constexpr int kHintViewDataOnly = 7742;
inline constexpr int kHintViewDataDump = 7743;

} // namespace kestrel::grid::txt
