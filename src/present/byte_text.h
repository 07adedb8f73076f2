#pragma once
// Byte strings as the user types them (trigger data, search data): plain
// characters with caret ("^M") and backslash ("\^", "\\") escapes, and their
// hexadecimal and binary digit forms.
//
// API overview
//   StrToHexWithControl(text)   "A^M\\" -> "410D5C"       (typed text -> hex digits)
//   StrToBinWithControl(text)   the same with eight binary digits per byte
//   HexToStrWithControl(hex)    "0D5E5C" -> "^M\^\\"      (hex digits -> typed text)
//   BinToStrWithControl(bin)    the same from binary digits
//   StrToHex(text) / HexToStr(hex)   the plain pair without escapes
//   ValidateHexString(s) / ValidateBinString(s)   drop characters while typing
//   ConvertTrigStrToRealStr(text)    caret text -> the bytes it means
//   RealStrToTrigStr(bytes)     bytes -> caret text (control bytes as "^M")
//   HexToBytes(hex)             hex digit pairs -> bytes (nullopt on a non-hex character)
//   BinToBytes(bin)             groups of eight binary digits -> bytes (nullopt on another character)
//   ReverseGlyphLookup(c)       the byte whose glyph is the character c
//   Utf16ToByteString / Utf8ToByteString / ByteStringToUtf8   edit-field text <-> byte strings
//
// A "byte string" is a std::string holding one character per byte, each
// character code 0-255 (the text of an edit field reduced to the low 8 bits
// of each character). The glyph-dependent routines take the glyph table as an
// argument that defaults to ActiveGlyphs().
//
// These routines keep their long-standing quirks because saved trigger and
// search texts depend on them: "^\" never encodes 0x1C (the backslash starts
// an escape), with the ANSI glyph set a space encodes as 0x00, unmatched caret
// pairs vanish, a non-hex character in a pair keeps the previous pair's value
// for that digit, and the validators keep the second of two adjacent invalid
// characters.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "present/char_tables.h"

namespace kestrel {

// First byte value whose glyph equals the low 8 bits of c; 0 when none does.
[[nodiscard]] std::uint8_t ReverseGlyphLookup(char16_t c, const GlyphTable &glyphs = ActiveGlyphs());

[[nodiscard]] std::string StrToHexWithControl(std::string_view text, const GlyphTable &glyphs = ActiveGlyphs());
[[nodiscard]] std::string StrToBinWithControl(std::string_view text, const GlyphTable &glyphs = ActiveGlyphs());
[[nodiscard]] std::string HexToStrWithControl(std::string_view hex, const GlyphTable &glyphs = ActiveGlyphs());
[[nodiscard]] std::string BinToStrWithControl(std::string_view bin, const GlyphTable &glyphs = ActiveGlyphs());

// Plain forms: StrToHex writes the low byte of each character's glyph as two
// hex digits; HexToStr writes each decoded byte as itself (or its DisplayTable
// text, which is empty).
[[nodiscard]] std::string StrToHex(std::string_view text, const GlyphTable &glyphs = ActiveGlyphs());
[[nodiscard]] std::string HexToStr(std::string_view hex);

// Remove characters outside "0123456789ABCDEF" / "01" (case-sensitive) in one
// pass that does not look again at a character moved into a deleted place.
[[nodiscard]] std::string ValidateHexString(std::string_view s);
[[nodiscard]] std::string ValidateBinString(std::string_view s);

// Caret text to bytes: "^X" pairs become the byte of that caret name, other
// characters are copied; a pair that names nothing (and a lone final caret)
// is dropped.
[[nodiscard]] std::string ConvertTrigStrToRealStr(std::string_view text);

// The caret text of a byte string, for showing a pattern: bytes 0x00-0x1F as
// their caret names, every other byte as itself. ConvertTrigStrToRealStr
// reads it back to the same bytes unless they hold a '^' (0x5E), which has no
// caret text of its own and starts a caret name when read back.
[[nodiscard]] std::string RealStrToTrigStr(std::string_view bytes);

// Hex digit pairs to bytes, case-insensitive, a trailing odd digit dropped.
// A character that is not a hex digit makes the whole text invalid.
[[nodiscard]] std::optional<std::string> HexToBytes(std::string_view hex);

// Binary digits, eight to a byte and most significant bit first, to bytes; a
// trailing group of fewer than eight digits is dropped. A character other than
// '0' or '1' makes the whole text invalid.
[[nodiscard]] std::optional<std::string> BinToBytes(std::string_view bin);

// Edit-field text to a byte string: the low 8 bits of each character.
[[nodiscard]] std::string Utf16ToByteString(std::u16string_view text);
// UTF-8 text to a byte string by code point (low 8 bits); a byte that is not
// part of a valid UTF-8 sequence is taken as it is.
[[nodiscard]] std::string Utf8ToByteString(std::string_view text);
// A byte string as UTF-8, each byte read as the code point U+0000-U+00FF.
[[nodiscard]] std::string ByteStringToUtf8(std::string_view bytes);

} // namespace kestrel
