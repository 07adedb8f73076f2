#include <gtest/gtest.h>

#include <string>

#include "present/byte_render.h"
#include "present/char_panel.h"
#include "present/char_tables.h"

using namespace kestrel;

namespace {
constexpr int kModes[] = {1, 2, 3, 4, 5, 6, 10};
constexpr int kOverlays[] = {0, 7, 8};

struct GlyphsPinned : ::testing::Test {
    void SetUp() override { SelectPlatformGlyphs(); }
    void TearDown() override { SelectPlatformGlyphs(); }
};
using RenderByteTest = GlyphsPinned;
} // namespace

// Which glyph a cell shows is the sweep's job below; here the exact texts of the cases users meet.
TEST_F(RenderByteTest, TheEdgeCasesOfTheCellDecision)
{
    EXPECT_EQ(RenderByte(0x0A, 1, 0), (CellContent{CellKind::Glyph, u'\u25D9', "\xE2\x97\x99"}));
    EXPECT_EQ(RenderByte(0x0A, 1, 7), (CellContent{CellKind::Caret, 0, "^J"}));
    EXPECT_EQ(RenderByte(0x0A, 1, 8), (CellContent{CellKind::Mnemonic, 0, "LF"}));
    EXPECT_EQ(RenderByte(0x14, 2, 8), (CellContent{CellKind::Nothing, 0, "RES/ENP"}));
    EXPECT_EQ(RenderByte(0x25, 2, 7), RenderByte(0x25, 2, 0)); // caret overlay ignored in EBCDIC
    EXPECT_EQ(RenderByte(0x25, 2, 8).text, "LF");
    EXPECT_EQ(RenderByte(0x00, 1, 0), (CellContent{CellKind::Glyph, 0, ""}));
    EXPECT_EQ(RenderByte(0xFF, 4, 8), (CellContent{CellKind::Number, 0, "255"}));
}

TEST_F(RenderByteTest, EveryByteModeAndOverlayGivesTheRightKind)
{
    int nothing = 0;
    for (int b = 0; b < 256; ++b) {
        const auto byte = static_cast<std::uint8_t>(b);
        for (int ov : kOverlays) {
            // Mode 10 and unknown modes draw exactly like ASCII.
            EXPECT_EQ(RenderByte(byte, 10, ov), RenderByte(byte, 1, ov)) << b;
            EXPECT_EQ(RenderByte(byte, 42, ov), RenderByte(byte, 1, ov)) << b;
            for (int mode : kModes) {
                const CellContent c = RenderByte(byte, mode, ov);
                if (IsNumberMode(mode)) {
                    EXPECT_EQ(c.kind, CellKind::Number) << b;
                } else if (b >= 0x20 && !(mode == 2 && ov == 8)) {
                    EXPECT_EQ(c.glyph, (mode == 2 ? EbcdicGlyphs : OemGlyphs)[b]) << b;
                }
                nothing += c.kind == CellKind::Nothing ? 1 : 0;
                EXPECT_EQ(RenderByteText(byte, mode, ov), c.text);
            }
        }
    }
    EXPECT_EQ(nothing, 4); // RES/ENP, IUS/ITB, BYP/INP, SM/SW
}

TEST_F(RenderByteTest, AsciiModeUsesTheActiveGlyphSet)
{
    SelectActiveGlyphs(GlyphSet::Ansi);
    EXPECT_EQ(RenderByte(0x0A, 1, 0).glyph, u' ');
    EXPECT_EQ(RenderByte(0x91, 1, 0).glyph, u'\u0091');
    EXPECT_EQ(RenderByte(0xE4, 1, 0).text, "\xC3\xA4");
    EXPECT_EQ(RenderByte(0x0A, 1, 7).text, "^J"); // the overlay does not depend on the set
}

TEST(NumberFormat, EveryByteInEveryBaseReadsBackAndHasItsWidth)
{
    for (int b = 0; b < 256; ++b) {
        const auto byte = static_cast<std::uint8_t>(b);
        const std::string hex = FormatByteNumber(byte, 3), dec = FormatByteNumber(byte, 4),
                          oct = FormatByteNumber(byte, 5), bin = FormatByteNumber(byte, 6);
        EXPECT_EQ(hex.size(), 2u);
        EXPECT_EQ(oct.size(), 3u);
        EXPECT_EQ(bin.size(), 8u);
        EXPECT_TRUE(dec == "0" || dec[0] != '0') << dec;
        EXPECT_EQ(hex.find_first_of("abcdef"), std::string::npos);
        EXPECT_EQ(std::stoi(hex, nullptr, 16), b);
        EXPECT_EQ(std::stoi(dec, nullptr, 10), b);
        EXPECT_EQ(std::stoi(oct, nullptr, 8), b);
        EXPECT_EQ(std::stoi(bin, nullptr, 2), b);
    }
    EXPECT_EQ(FormatByteNumber(0x41, 1), "");
    EXPECT_EQ(IntToHex(0x1234, 2), "1234"); // at least, never cut
    EXPECT_EQ(FormatBinary(0x1FF, 8), "11111111"); // only the asked bits
}

TEST(Description, NamesFollowTheModeAndJoinForTwoBytes)
{
    EXPECT_EQ(ControlDescription(0x01, 1), "start of heading");
    EXPECT_EQ(ControlDescription(0x25, 2), "line feed");
    EXPECT_EQ(ControlDescription(0x01, 3), "");
    EXPECT_EQ(JoinDescriptions(0x0D, 0x0A, 1), "carriage return <---|---> line feed");
    EXPECT_EQ(JoinDescriptions(0x41, 0x0A, 1), "line feed");
    EXPECT_EQ(JoinDescriptions(std::nullopt, 0x0A, 1), "line feed");
    EXPECT_EQ(JoinDescriptions(0x0D, 0x0A, 6), "");
}

TEST(CharPanel, ModeButtonsPerViewAndOverlayButtons)
{
    CharPanelState p;
    p.ChooseMode(CharMode::Ebcdic);
    EXPECT_FALSE(p.caretButtonEnabled);
    p.ChooseMode(CharMode::Bin);
    EXPECT_EQ(p.charMode, 6);
    EXPECT_FALSE(p.mnemonicButtonEnabled);

    // The dump view's number buttons change only the secondary mode.
    p.SwitchView(ViewNumber::Dump);
    p.ChooseMode(CharMode::Oct);
    EXPECT_EQ(p.charMode, 1);
    EXPECT_EQ(p.secondaryMode, 5);
    EXPECT_TRUE(p.caretButtonEnabled);

    // Going back restores view 1's pair.
    p.SwitchView(ViewNumber::Vertical);
    EXPECT_EQ(p.ModesOfView(1), (ViewModes{6, 3}));
    EXPECT_EQ(p.charMode, 6);
    EXPECT_FALSE(p.caretButtonEnabled);

    p.ClickCaretButton();
    EXPECT_EQ(p.overlay, 7);
    p.ClickMnemonicButton();
    EXPECT_EQ(p.overlay, 8);
}
