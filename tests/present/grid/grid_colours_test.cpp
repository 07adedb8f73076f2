// The grid's colours on light and dark bases: every mark, error tile, description
// and waveform stays readable in both sets; a style sheet's colours reach the grid
// and are forgotten again when asked; the shipped styles' sheets name only colours
// the grid has, and keep their contrast on the base they are made for.

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QRegularExpression>
#include <QVBoxLayout>
#include <cmath>
#include <fstream>

#include "config/styles.h"
#include "present/grid/grid_options.h"
#include "present/grid/record_grid.h"
#include "record/mp_record.h"
#include "record/record_codes.h"
#include "support/temp_dir.h"
#include "support/widget_app.h"

using namespace kestrel;
using namespace kestrel::grid;

namespace {

// WCAG relative luminance and contrast ratio.
double Luminance(const QColor &c)
{
    auto channel = [](double v) { return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
}
double Contrast(const QColor &a, const QColor &b)
{
    const double la = Luminance(a), lb = Luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

const QColor kLightBase(255, 255, 255);
const QColor kDarkBase(0x1a, 0x1d, 0x22); // the dark style's base

// Text 4.5:1 against what it stands on; lines and bands 3:1 and a visible step.
void ExpectReadable(const GridColours &c, const QColor &base, const std::string &set)
{
    const MarkStyle marks[] = {MarkStyle::SystemStart, MarkStyle::SystemStop,   MarkStyle::SystemOther,
                               MarkStyle::TriggerStart, MarkStyle::TriggerStop, MarkStyle::TriggerDetected};
    for (MarkStyle m : marks) {
        const auto i = static_cast<std::size_t>(MarkIndex(m));
        EXPECT_GE(Contrast(c.markText[i], c.markBack[i]), 4.5) << set << " mark " << i;
    }
    EXPECT_GE(Contrast(c.errorText, c.errorBack), 4.5) << set;
    EXPECT_GE(Contrast(c.errorBack, base), 3.0) << set << ": the error tile stands out";
    for (const QColor &row : {base, c.d2RowTint, c.currentCell})
        EXPECT_GE(Contrast(c.description, row), 4.5) << set << " description on " << row.name().toStdString();
    EXPECT_GE(Contrast(c.waveLine, base), 3.0) << set << ": the level line";
    EXPECT_GE(Contrast(c.waveLine, c.waveFill), 1.8) << set << ": the line on the high band";
    EXPECT_GE(Contrast(c.waveFill, base), 1.3) << set << ": the high band";
    EXPECT_GE(Contrast(c.gridLine, base), 1.15) << set << ": cell lines show";
    EXPECT_LT(Contrast(c.d2RowTint, base), 1.3) << set << ": the row tint stays a tint";
}

struct ColourFixture : ::testing::Test {
    QApplication &app = test::WidgetApp(); // before any widget
    QWidget window;
    RecordGrid *grid = nullptr;
    void SetUp() override
    {
        auto *layout = new QVBoxLayout(&window);
        grid = new RecordGrid(&window);
        layout->addWidget(grid);
        window.resize(900, 300);
        window.show();
        QApplication::processEvents();
    }
    void SetBase(const QColor &base)
    {
        QPalette p = grid->palette();
        p.setColor(QPalette::Base, base);
        grid->setPalette(p);
    }
};

// The qproperty-NAME: #rrggbb lines of a style sheet.
std::vector<std::pair<QString, QColor>> SheetColours(std::string_view sheet)
{
    std::vector<std::pair<QString, QColor>> out;
    static const QRegularExpression line(QStringLiteral("qproperty-(\\w+)\\s*:\\s*(#[0-9a-fA-F]{6})"));
    auto it = line.globalMatch(QString::fromUtf8(sheet.data(), static_cast<qsizetype>(sheet.size())));
    while (it.hasNext()) {
        const auto m = it.next();
        out.emplace_back(m.captured(1), QColor(m.captured(2)));
    }
    return out;
}

} // namespace

TEST_F(ColourFixture, BothBuiltInSetsAreReadableAndTheBaseChoosesBetweenThem)
{
    ExpectReadable(LightGridColours(), kLightBase, "light");
    ExpectReadable(DarkGridColours(), kDarkBase, "dark");

    SetBase(kLightBase);
    EXPECT_EQ(grid->Colours().waveLine, LightGridColours().waveLine);
    SetBase(kDarkBase);
    EXPECT_EQ(grid->Colours().waveLine, DarkGridColours().waveLine);
    EXPECT_EQ(grid->Colours().markBack, DarkGridColours().markBack);
}

TEST_F(ColourFixture, TheShippedSheetsNameOnlyGridColoursAndKeepTheirContrast)
{
    ASSERT_FALSE(ShippedStyles().empty());
    for (const ShippedStyle &style : ShippedStyles()) {
        const auto colours = SheetColours(style.sheet);
        EXPECT_GE(colours.size(), 20u) << style.name << ": every grid colour is there to edit";
        grid->ResetColours();
        SetBase(style.dark ? kDarkBase : kLightBase);
        grid->setStyleSheet(QString::fromUtf8(style.sheet.data(), static_cast<qsizetype>(style.sheet.size())));
        grid->ensurePolished();
        for (const auto &[name, colour] : colours) {
            const QVariant set = grid->property(name.toLatin1().constData());
            EXPECT_TRUE(set.isValid()) << style.name << ": the grid has no colour " << name.toStdString();
            EXPECT_EQ(set.value<QColor>(), colour) << style.name << " " << name.toStdString();
        }
        ExpectReadable(grid->Colours(), style.dark ? kDarkBase : kLightBase, style.name);
        grid->setStyleSheet(QString());
    }
    // What a sheet set is kept until it is reset; an unset colour follows the base.
    EXPECT_EQ(grid->Colours().waveLine, QColor("#a0aab8"));
    grid->ResetColours();
    EXPECT_EQ(grid->Colours().waveLine, DarkGridColours().waveLine);
}

TEST_F(ColourFixture, ADarkBasePaintsTheDarkBadgesAndTheGridLinesFollowItsOptionSet)
{
    test::TempDir dir;
    const std::string path = dir.file("marks.ksr");
    {
        std::ofstream out(path, std::ios::binary);
        for (std::uint32_t n = 0; n < 3; ++n) {
            MpRecord mp;
            mp.number = n;
            mp.markKind = kSystemMarkKind;
            mp.markCode = n == 0 ? SystemMark::NewFile : n == 1 ? SystemMark::Started : SystemMark::Stopped;
            const MpBytes b = EncodeMp(mp);
            out.write(reinterpret_cast<const char *>(b.data()), static_cast<std::streamsize>(b.size()));
        }
    }
    SetBase(kDarkBase);
    ASSERT_TRUE(grid->OpenRecording(QString::fromStdString(path)));
    QApplication::processEvents();
    const QImage img = grid->viewport()->grab().toImage();
    const QColor startBack = DarkGridColours().markBack[static_cast<std::size_t>(MarkIndex(MarkStyle::SystemStart))];
    const QColor lightStart = LightGridColours().markBack[static_cast<std::size_t>(MarkIndex(MarkStyle::SystemStart))];
    int dark = 0, light = 0;
    const QRect badge = grid->CellRect(0, 1); // MP 1, the start mark
    for (int y = badge.top(); y <= badge.bottom(); ++y)
        for (int x = badge.left(); x <= badge.right(); ++x) {
            dark += img.pixelColor(x, y) == startBack;
            light += img.pixelColor(x, y) == lightStart;
        }
    EXPECT_GT(dark, 40);
    EXPECT_EQ(light, 0);

    // The option set: lines as it says, every other bit back as it was given.
    grid->SetGridOptions(GridOption::FixedVertLine | GridOption::HorzLine | (1 << 20));
    EXPECT_EQ(grid->modes().gridLines(), (GridLineOptions{false, true}));
    grid->setGridLines(GridLines::Vertical);
    EXPECT_EQ(grid->GridOptions(), GridOption::FixedVertLine | GridOption::VertLine | (1 << 20));
}
