#include "present/char_tables.h"

#include <atomic>

namespace kestrel {

namespace {
// Read by the redraw thread, written once at start-up (and by tests).
std::atomic<int> g_activeSet{static_cast<int>(GlyphSet::Oem)};
} // namespace

const GlyphTable &GlyphTableOf(GlyphSet set)
{
    return set == GlyphSet::Oem ? OemGlyphs : AnsiGlyphs;
}

const GlyphTable &ActiveGlyphs()
{
    return GlyphTableOf(static_cast<GlyphSet>(g_activeSet.load(std::memory_order_relaxed)));
}

int ActiveGlyphsFlag()
{
    return g_activeSet.load(std::memory_order_relaxed) == static_cast<int>(GlyphSet::Oem) ? 1 : 0;
}

void SelectActiveGlyphs(GlyphSet set)
{
    g_activeSet.store(static_cast<int>(set), std::memory_order_relaxed);
}

void SelectPlatformGlyphs()
{
    // Every system Kestrel runs on today takes the OEM set, the same choice the
    // product made on its NT-family hosts.
    SelectActiveGlyphs(GlyphSet::Oem);
}

void AppendUtf8(std::string &out, char16_t glyph)
{
    const auto c = static_cast<unsigned>(glyph);
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

std::string GlyphToUtf8(char16_t glyph)
{
    std::string s;
    if (glyph != 0)
        AppendUtf8(s, glyph);
    return s;
}

} // namespace kestrel
