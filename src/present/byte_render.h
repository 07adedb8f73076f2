#pragma once
// What one data byte looks like: the cell decision shared by the grid's
// painter, the export, the report and kestrel-cli.
//
// API overview
//   CharMode::, Overlay::          the character modes (1-6, 10) and the control overlays (0, 7, 8).
//   RenderByte(byte, mode, ov)     -> CellContent {kind, glyph, text}: what a cell shows.
//   RenderByteText(byte, mode, ov) -> the same as plain text for terminals and files.
//   IntToHex / FormatOctal / FormatBinary / FormatDecimal   the general number formatters.
//   ByteToHex / ByteToDec / ByteToOct / ByteToBin           the byte columns ("0A", "10", "012", "00001010").
//   FormatByteNumber(byte, mode)   number text for modes 3-6 (empty for other modes).
//   ControlDescription(byte, mode) the long control-character name shown in description columns.
//   JoinDescriptions(d1, d2)       the two names joined by " <---|---> ".
//   CaretDrawing / MnemonicDrawing where each letter of a caret text or stacked mnemonic goes.
//   kCellFontFamily, kGlyphFontSize   fonts of the cell drawings.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

namespace CharMode {
inline constexpr int Ascii = 1;
inline constexpr int Ebcdic = 2;
inline constexpr int Hex = 3;
inline constexpr int Dec = 4;
inline constexpr int Oct = 5;
inline constexpr int Bin = 6;
inline constexpr int Reserved = 10; // behaves exactly like Ascii
} // namespace CharMode

namespace Overlay {
inline constexpr int None = 0;
inline constexpr int Caret = 7;
inline constexpr int Mnemonic = 8;
} // namespace Overlay

// True for the modes that show a number (3-6): there the overlay has no effect.
[[nodiscard]] constexpr bool IsNumberMode(int mode) { return mode >= CharMode::Hex && mode <= CharMode::Bin; }

enum class CellKind {
    Glyph,    // one character from a glyph table (glyph; text = its UTF-8, empty for U+0000)
    Caret,    // caret notation such as "^J" (text), drawn small caret + letter
    Mnemonic, // a two- or three-letter mnemonic (text), drawn as letters on a diagonal
    Number,   // the HEX/DEC/OCT/BIN text of the byte (text)
    Nothing,  // a mnemonic too long to stack ("RES/ENP"): the cell stays empty;
              // text still holds the mnemonic for outputs that print text
};

struct CellContent {
    CellKind kind = CellKind::Nothing;
    char16_t glyph = 0; // only for CellKind::Glyph
    std::string text;   // UTF-8; short enough to stay in the small-string buffer

    friend bool operator==(const CellContent &, const CellContent &) = default;
};

// The cell decision for one data byte. Any mode other than 2-6 draws like
// ASCII (mode 10 and stray values from a settings file alike). Glyphs come
// from ActiveGlyphs() in the ASCII modes and EbcdicGlyphs in mode 2.
[[nodiscard]] CellContent RenderByte(std::uint8_t byte, int charMode, int overlay);

// Text form of RenderByte for terminals and text files: the glyph's UTF-8,
// the caret text, the mnemonic (also the long ones), or the number. U+0000
// gives an empty text.
[[nodiscard]] std::string RenderByteText(std::uint8_t byte, int charMode, int overlay);

// General number formatters.
// Hexadecimal, upper case, at least `digits` digits (more if the value needs them).
[[nodiscard]] std::string IntToHex(std::uint64_t value, int digits);
// Decimal without padding.
[[nodiscard]] std::string FormatDecimal(std::int64_t value);
// Octal, zero-padded to at least `digits` digits.
[[nodiscard]] std::string FormatOctal(std::uint64_t value, int digits);
// Exactly `digits` binary digits, bit digits-1 first (higher bits are not shown).
[[nodiscard]] std::string FormatBinary(std::uint64_t value, int digits);

[[nodiscard]] std::string ByteToHex(std::uint8_t byte); // "0A"
[[nodiscard]] std::string ByteToDec(std::uint8_t byte); // "10"
[[nodiscard]] std::string ByteToOct(std::uint8_t byte); // "012"
[[nodiscard]] std::string ByteToBin(std::uint8_t byte); // "00001010"
// Number text of a byte for modes 3-6; empty for any other mode.
[[nodiscard]] std::string FormatByteNumber(std::uint8_t byte, int charMode);

// The long name of a control byte for description columns: modes 2 use the
// EBCDIC names (for bytes with an EBCDIC mnemonic), modes 3-6 give nothing,
// every other mode the ASCII names (for bytes with an ASCII mnemonic).
[[nodiscard]] std::string_view ControlDescription(std::uint8_t byte, int charMode);

inline constexpr std::string_view kDescriptionJoiner = " <---|---> ";
// Description of an MP's two bytes: each present byte's name, joined by
// kDescriptionJoiner when both have one; an absent byte contributes nothing.
[[nodiscard]] std::string JoinDescriptions(std::optional<std::uint8_t> d1, std::optional<std::uint8_t> d2,
                                           int charMode);

// ---- Drawing geometry (pixels, relative to the cell's top-left) -----------

// Cell fonts: a monospace font for glyphs and names.
inline constexpr std::string_view kCellFontFamily = "DejaVu Sans Mono";
inline constexpr int kGlyphFontSize = 10;
// Number and time texts are drawn at the cell's left + 2, top + 2.
inline constexpr int kCellTextInset = 2;

struct LetterPlacement {
    char letter = 0;
    int fontSize = 0;
    double dx = 0; // offset from the cell's top-left
    double dy = 0;
};

struct LetterDrawing {
    std::array<LetterPlacement, 3> letters{};
    int count = 0; // 0: draw nothing
};

// Caret text "^X": the caret at size 5 in the corner, the letter at size 8,
// 6 px (times vScale) lower. A text not starting with '^' draws nothing.
[[nodiscard]] LetterDrawing CaretDrawing(std::string_view caretText, double hScale = 1, double vScale = 1);

// Mnemonic stacked on a diagonal: two letters at size 8, offsets (0,0), (5,9);
// three letters at size 6, offsets (0,0), (4,7), (8,14); both times the scales.
// Any other length draws nothing, leaving the cell's background.
[[nodiscard]] LetterDrawing MnemonicDrawing(std::string_view mnemonic, double hScale = 1, double vScale = 1);

} // namespace kestrel
