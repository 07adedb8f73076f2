#pragma once
// Settings files reach Kestrel in three encodings: UTF-8 (its own), the Windows
// ANSI code page (files the Windows program and older editors wrote) and UTF-16
// with a byte-order mark (a Windows editor's "Unicode"). Everything inside
// Kestrel is UTF-8.

#include <string>

namespace kestrel {

// UTF-16 (LE or BE, told by its byte-order mark) is converted; text that is not
// valid UTF-8 is taken as Windows-1252; valid UTF-8 is returned as it is.
// Unpaired surrogates become U+FFFD.
[[nodiscard]] std::string SettingsTextToUtf8(std::string raw);

} // namespace kestrel
