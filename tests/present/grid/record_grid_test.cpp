#include <gtest/gtest.h>

#include <QApplication>
#include <QGuiApplication>
#include <QPaintEvent>
#include <QScreen>
#include <QImage>
#include <QPainter>
#include <QKeyEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QWidget>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <mutex>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "base/string_table.h"
#include "capture/receive_event.h"
#include "present/grid/glyph_painter.h"
#include "present/grid/grid_layout.h"
#include "present/grid/live_source.h"
#include "present/grid/record_grid.h"
#include "present/grid/redraw_loop.h"
#include "present/grid/store_live_source.h"
#include "record/clock.h"
#include "record/record_store.h"
#include "support/event_loop.h"
#include "support/temp_dir.h"
#include "support/widget_app.h"

using namespace kestrel;
using namespace kestrel::grid;

namespace {

constexpr double kT0 = 46000.25;

// MP 0 new-file mark, MP 1 start mark, then data: D1 'A'.. on every MP,
// D2 on every third, S1 high on MPs 2..4, a framing error on MP 3 (D1),
// and the stop mark as the last MP.
MpRecord CraftedMp(std::uint32_t n, std::uint32_t last)
{
    MpRecord mp;
    mp.number = n;
    mp.time = kT0 + n * 0.001 / 86400.0;
    if (n == 0 || n == 1 || n == last) {
        mp.markKind = kSystemMarkKind;
        mp.markCode = n == 0 ? SystemMark::NewFile : n == 1 ? SystemMark::Started : SystemMark::Stopped;
        return mp;
    }
    mp.d1 = static_cast<std::uint8_t>('A' + n % 26);
    mp.d1Valid = 1;
    mp.d2 = static_cast<std::uint8_t>(n % 32);
    mp.d2Valid = n % 3 == 0;
    mp.s1 = n >= 2 && n <= 4;
    mp.feD1 = n == 3;
    mp.loadActual = 42;
    return mp;
}

std::string WriteRecording(const test::TempDir &dir, std::uint32_t count)
{
    const std::string path = dir.file("crafted.ksr");
    std::ofstream out(path, std::ios::binary);
    for (std::uint32_t n = 0; n < count; ++n) {
        const MpBytes b = EncodeMp(CraftedMp(n, count - 1));
        out.write(reinterpret_cast<const char *>(b.data()), static_cast<std::streamsize>(b.size()));
    }
    return path;
}

void Press(QWidget *w, int key)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(w, &press);
}

// A wheel turn of angle eighths of a degree (120 is one notch; touchpads send
// small pieces of it).
void Wheel(RecordGrid *grid, int angle)
{
    const QPointF at(100, 100);
    QWheelEvent e(at, grid->viewport()->mapToGlobal(at), QPoint(), QPoint(0, angle), Qt::NoButton, Qt::NoModifier,
                  Qt::NoScrollPhase, false);
    QApplication::sendEvent(grid->viewport(), &e);
}

struct GridFixture : ::testing::Test {
    test::TempDir dir;
    QApplication &app = test::WidgetApp(); // before any widget
    QWidget window;
    RecordGrid *grid = nullptr;
    void SetUp() override
    {
        SetGlobalLang(kLangEnglish);
        auto *layout = new QVBoxLayout(&window);
        grid = new RecordGrid(&window);
        layout->addWidget(grid);
        window.resize(1000, 16 * 22 + 40);
        window.show();
        QApplication::processEvents();
    }
    void TearDown() override { SetGlobalLang(kLangGerman); }
};

int CountPixels(const QImage &img, const QRect &r, const std::function<bool(QColor)> &match)
{
    int n = 0;
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            if (match(img.pixelColor(x, y)))
                ++n;
    return n;
}

// A recording written MP by MP while the grid shows it, seen through the live
// buffer the grid asks for (the newest MPs it wants).
struct LiveLine {
    std::mutex m;
    std::vector<MpRecord> store;
    std::atomic<std::uint32_t> written{0};
    std::atomic<std::size_t> keep{0};
    FunctionLiveSource source{[this] { return written.load(); }, [](std::chrono::milliseconds) { return true; },
                              [this] {
                                  std::lock_guard lock(m);
                                  const std::size_t n = std::min(store.size(), keep.load());
                                  return std::vector<MpRecord>(store.end() - static_cast<std::ptrdiff_t>(n),
                                                               store.end());
                              },
                              [this](std::size_t n) { keep = n; }};

    void push(std::uint32_t n)
    {
        std::lock_guard lock(m);
        for (std::uint32_t i = 0; i < n; ++i) {
            MpRecord mp = CraftedMp(static_cast<std::uint32_t>(store.size()), 1'000'000);
            // S2 changes every other MP: the waveform of the newest row changes
            // when the MP after it comes.
            mp.s2 = (mp.number / 2) % 2;
            store.push_back(mp);
        }
        written += n;
    }
};

} // namespace

TEST_F(GridFixture, FoundByObjectNameWithItsScrollBar)
{
    EXPECT_EQ(window.findChild<RecordGrid *>("DrawGrid1"), grid);
    auto *bar = window.findChild<QScrollBar *>("ScrollBar1");
    ASSERT_NE(bar, nullptr);
    EXPECT_FALSE(grid->isRecordingOpen());
    EXPECT_FALSE(grid->OpenRecording(QString::fromStdString(dir.file("missing.ksr"))));
    EXPECT_FALSE(grid->errorText().isEmpty());
    // Neither a folder nor a named pipe is a recording; the pipe must not
    // hang the window waiting for a writer.
    const std::string fifo = dir.file("pipe.ksr");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(grid->OpenRecording(QString::fromStdString(fifo)));
    EXPECT_FALSE(grid->errorText().isEmpty());
    EXPECT_FALSE(grid->isRecordingOpen());
    EXPECT_EQ(grid->statusLine().value(0), "No recording open");
    // A language switch reaches the status line at once.
    QSignalSpy status(grid, &RecordGrid::statusLineChanged);
    SetGlobalLang(kLangGerman);
    grid->InitialLoads();
    EXPECT_EQ(status.size(), 1);
    EXPECT_EQ(grid->statusLine().value(0), QString::fromUtf8("Keine Aufzeichnung geöffnet"));
}

TEST_F(GridFixture, KeysAtTheEdgesOfARecording)
{
    ASSERT_TRUE(grid->OpenRecording(QString::fromStdString(WriteRecording(dir, 500))));
    const std::int64_t page = grid->largeChange();
    ASSERT_GT(page, 5);

    Press(grid, Qt::Key_End);
    const std::int64_t end = 500 - page - 1;
    EXPECT_EQ(grid->position(), end);
    auto *bar = window.findChild<QScrollBar *>("ScrollBar1");
    EXPECT_EQ(bar->value(), bar->maximum());

    Press(grid, Qt::Key_Down);
    Press(grid, Qt::Key_PageDown);
    EXPECT_EQ(grid->position(), end);
    Press(grid, Qt::Key_Home);
    EXPECT_EQ(grid->position(), 0);

    // The wheel steps one line per notch, however the notch is cut up.
    for (int i = 0; i < 3; ++i)
        Wheel(grid, -40);
    EXPECT_EQ(grid->position(), 1);
    Wheel(grid, -240);
    EXPECT_EQ(grid->position(), 3);
    Press(grid, Qt::Key_Home);

    // Following the end: only End acts, and the top button leaves the cursor alone.
    Press(grid, Qt::Key_PageUp);
    Press(grid, Qt::Key_Down);
    Press(grid, Qt::Key_Down);
    grid->SetFollowEnd(true);
    Press(grid, Qt::Key_PageDown);
    EXPECT_EQ(grid->position(), 0);
    grid->scrollToEnd();
    EXPECT_EQ(grid->position(), end);
    const int rowBefore = grid->currentRow();
    ASSERT_GT(rowBefore, 1);
    grid->scrollToTop();
    EXPECT_EQ(grid->position(), end);
    EXPECT_EQ(grid->currentRow(), rowBefore);
    grid->SetFollowEnd(false);
    grid->scrollToTop();
    EXPECT_EQ(grid->position(), 0);
    EXPECT_EQ(grid->currentRow(), 1);

    grid->CloseRecording();
    EXPECT_EQ(grid->statusLine().value(0), "No recording open");
}

TEST_F(GridFixture, ViewSwitchingAndModeButtons)
{
    ASSERT_TRUE(grid->OpenRecording(QString::fromStdString(WriteRecording(dir, 2000))));
    QSignalSpy overlay(grid, &RecordGrid::overlayButtonsChanged);
    grid->selectView(kViewDataDump);
    EXPECT_EQ(grid->colCount(), 35);

    grid->selectView(kViewVertical);
    grid->setCharMode(3); // HEX in the vertical view disables both overlay buttons
    ASSERT_FALSE(overlay.isEmpty());
    EXPECT_EQ(overlay.last().value(0).toBool(), false);
    EXPECT_EQ(overlay.last().value(1).toBool(), false);
    grid->selectView(kViewDataDump); // the dump remembers ASCII
    EXPECT_EQ(grid->modes().charMode(), 1);
    grid->selectView(kViewVertical);
    EXPECT_EQ(grid->modes().charMode(), 3);

    // The horizontal view does not exist: the grid says so, and the view stays.
    QSignalSpy unavailable(grid, &RecordGrid::viewUnavailable);
    QSignalSpy changed(grid, &RecordGrid::viewChanged);
    grid->selectView(kViewHorizontal);
    ASSERT_EQ(unavailable.size(), 1);
    EXPECT_EQ(unavailable[0].value(0).toInt(), kViewHorizontal);
    EXPECT_TRUE(changed.isEmpty());
    EXPECT_EQ(grid->modes().view(), kViewVertical);

    grid->copyCell();
    EXPECT_EQ(grid->text(), QString::fromUtf8("Kopieren im Popup-Menü gedrückt!!! (OnExecute)"));
}

TEST_F(GridFixture, RenderedImageShowsMarksWaveformsAndErrors)
{
    ASSERT_TRUE(grid->OpenRecording(QString::fromStdString(WriteRecording(dir, 12))));
    grid->setWaveformFill(true);
    QApplication::processEvents();
    QImage img = grid->viewport()->grab().toImage();
    ASSERT_FALSE(img.isNull());
    // Row 1 is MP 1: the green start badge in the mark column.
    const auto green = [](QColor c) { return c.green() > c.red() + 20 && c.green() > c.blue() + 20; };
    EXPECT_GT(CountPixels(img, grid->CellRect(0, 1), green), 50);
    // Row 3 = MP 3: S1 high (filled silver band), a framing error tile on D1 only.
    const auto silver = [](QColor c) { return c.red() == 192 && c.green() == 192 && c.blue() == 192; };
    EXPECT_GT(CountPixels(img, grid->CellRect(5, 3), silver), 40);
    const auto red = [](QColor c) { return c.red() > 180 && c.green() < 80 && c.blue() < 80; };
    EXPECT_GT(CountPixels(img, grid->CellRect(11, 3), red), 20);
    EXPECT_EQ(CountPixels(img, grid->CellRect(12, 3), red), 0);

    // Without fill the high band stays empty; ClearGrid blanks every data row.
    grid->setWaveformFill(false);
    QApplication::processEvents();
    img = grid->viewport()->grab().toImage();
    EXPECT_EQ(CountPixels(img, grid->CellRect(5, 3), silver), 0);
    grid->ClearGrid();
    img = grid->viewport()->grab().toImage();
    EXPECT_EQ(CountPixels(img, grid->CellRect(11, 3), red), 0);
    grid->RedrawGrid();
    img = grid->viewport()->grab().toImage();
    EXPECT_GT(CountPixels(img, grid->CellRect(11, 3), red), 20);
}

// A number cell never shows a different value than its byte: at the default widths
// the widest text of every number mode fits its cell in a readable size.
TEST_F(GridFixture, NumberCellsShowTheWholeValueAtTheirDefaultWidths)
{
    ASSERT_TRUE(grid->OpenRecording(QString::fromStdString(WriteRecording(dir, 12))));
    struct Case {
        const char *viewButton;
        int view, mode, col;
        std::vector<QString> texts;
    };
    const Case cases[] = {
        {"data-only HEX", kViewDataOnly, CharMode::Hex, 2, {"0D", "3D", "88", "DB", "FF", "0B"}},
        {"data-only DEC", kViewDataOnly, CharMode::Dec, 2, {"255", "188", "200"}},
        {"data-only OCT", kViewDataOnly, CharMode::Oct, 2, {"377", "274"}},
        {"data-only BIN", kViewDataOnly, CharMode::Bin, 2, {"11111111", "10001000", "00000000"}},
        {"vertical HEX", kViewVertical, CharMode::Hex, 3, {"0D", "FF"}},
        {"vertical DEC", kViewVertical, CharMode::Dec, 3, {"255", "188"}},
        {"vertical BIN", kViewVertical, CharMode::Bin, 4, {"11111111", "10001000"}},
    };
    for (const Case &c : cases) {
        grid->selectView(c.view);
        grid->setCharMode(c.mode);
        QApplication::processEvents();
        const QRect cell = grid->CellRect(c.col, 1);
        for (const QString &text : c.texts) {
            const QFont f = NumberFont(grid->textFont(), text, cell.width() - kCellTextDx);
            EXPECT_GE(f.pixelSize(), kSmallestNumberPixels) << c.viewButton;
            EXPECT_LE(QFontMetrics(f).boundingRect(text).right(), cell.width() - kCellTextDx)
                << c.viewButton << " " << text.toStdString() << " in " << cell.width() << " px";
        }
    }
    // HEX needs no smaller font than 9 px in its 15 px cell: it stays easy to read.
    grid->selectView(kViewDataOnly);
    grid->setCharMode(CharMode::Hex);
    EXPECT_GE(NumberFont(grid->textFont(), "DB", grid->CellRect(2, 1).width() - kCellTextDx).pixelSize(), 9);
}

// Every header of the vertical view fits its column in both languages and both
// namings ("D2Err" was cut).
TEST_F(GridFixture, VerticalHeadersFitTheirColumns)
{
    const ViewShape v = ShapeForView(kViewVertical, 1000);
    const QFontMetrics fm(grid->textFont());
    for (const int lang : {kLangGerman, kLangEnglish})
        for (const int naming : {kNamingCircuit, kNamingPin})
            for (int col = 0; col < 13; ++col) {
                const QString text = QString::fromStdString(HeaderText(v, col, naming, 1, lang));
                // Two pixels to spare beside the text: a slightly wider font must not cut it.
                EXPECT_LE(fm.horizontalAdvance(text) + kHeaderTextDx + 2, ColumnWidth(v, col, 1000, 3) - 1)
                    << text.toStdString() << " in column " << col;
            }
}

// A header border can be dragged in every view; the widths come back as set.
TEST_F(GridFixture, ColumnsAreResizedByDraggingTheHeaderBorder)
{
    ASSERT_TRUE(grid->OpenRecording(QString::fromStdString(WriteRecording(dir, 12))));
    const int before = grid->CellRect(2, 1).width(); // the time column
    const int border = grid->CellRect(3, 0).left();  // its right border in the header row
    QTest::mousePress(grid->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(border, 5));
    QTest::mouseMove(grid->viewport(), QPoint(border + 40, 5));
    QTest::mouseRelease(grid->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(border + 40, 5));
    EXPECT_EQ(grid->CellRect(2, 1).width(), before + 40);
    EXPECT_EQ(grid->CellRect(3, 1).left(), border + 40); // the columns right of it move along
    const std::vector<int> widths = grid->ColumnWidthsOf(kViewVertical, 13);
    ASSERT_EQ(widths.size(), 13u);
    EXPECT_EQ(widths[2], 150 + 40);

    // A click on a data row is no drag; built-in widths read back as themselves.
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(border + 40, 40));
    EXPECT_EQ(grid->ColumnWidthsOf(kViewVertical, 13), widths);
    std::vector<int> stored = widths;
    stored[2] = 0; // a width of 0 in the settings: the built-in one
    stored[3] = 10; // D1 cannot be made too narrow for its byte
    grid->SetColumnWidths(kViewVertical, stored);
    EXPECT_EQ(grid->ColumnWidthsOf(kViewVertical, 13)[2], 150);
    EXPECT_EQ(grid->ColumnWidthsOf(kViewVertical, 13)[3], 30);

    // Data-only: one data cell's border sizes them all, and fewer fit a row.
    grid->selectView(kViewDataOnly);
    QApplication::processEvents();
    const std::int64_t perRowBefore = grid->largeChange();
    const int cell = grid->CellRect(2, 1).width();
    const int edge = grid->CellRect(3, 0).left();
    QTest::mousePress(grid->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(edge, 5));
    QTest::mouseMove(grid->viewport(), QPoint(edge + 10, 5));
    QTest::mouseRelease(grid->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(edge + 10, 5));
    EXPECT_EQ(grid->CellRect(2, 1).width(), cell + 10);
    EXPECT_EQ(grid->CellRect(9, 1).width(), cell + 10);
    EXPECT_LT(grid->largeChange(), perRowBefore);
    const std::vector<int> dataOnly = grid->ColumnWidthsOf(kViewDataOnly, 326);
    EXPECT_EQ(dataOnly[4], cell + 10);
    EXPECT_EQ(dataOnly[325], cell + 10); // kept for columns a wider window would show
    EXPECT_TRUE(grid->HasUserWidth(kViewDataOnly, 325));
    EXPECT_FALSE(grid->HasUserWidth(kViewDataOnly, 0));
    grid->SetColumnWidths(kViewDataOnly, {0, 0, 0});
    EXPECT_EQ(grid->CellRect(2, 1).width(), cell);
}

TEST_F(GridFixture, LiveRecordingFollowsTheEndAndStopsCleanly)
{
    LiveLine line;
    QSignalSpy gauges(grid, &RecordGrid::gaugeChanged);
    QSignalSpy progress(grid, &RecordGrid::progressTextChanged);
    grid->StartRedraw(&line.source);
    line.push(200);
    ASSERT_TRUE(test::SpinUntil([&] { return grid->recordCount() == 200; }));
    EXPECT_EQ(grid->position(), 200 - grid->largeChange() - 1);
    ASSERT_TRUE(test::SpinUntil([&] { return !gauges.isEmpty(); }));
    EXPECT_EQ(gauges.first().value(1).toInt(), 42);

    // Held: no new data is taken, the progress text moves.
    grid->SetHold(true);
    line.push(50);
    ASSERT_TRUE(test::SpinUntil([&] { return !progress.isEmpty(); }));
    EXPECT_EQ(grid->recordCount(), 200);
    // Released, the grid shows the newest MPs at once, even if the line has
    // gone quiet in the meantime.
    grid->SetHold(false);
    EXPECT_EQ(grid->recordCount(), 250);
    EXPECT_EQ(grid->position(), 250 - grid->largeChange() - 1);
    line.push(1);
    ASSERT_TRUE(test::SpinUntil([&] { return grid->recordCount() == 251; }));

    // Stopping while the worker keeps asking for steps returns promptly.
    line.push(100);
    const auto t0 = std::chrono::steady_clock::now();
    grid->StopRedraw();
    EXPECT_LT(std::chrono::steady_clock::now() - t0, std::chrono::milliseconds(2000));
    EXPECT_FALSE(grid->isRedrawRunning());
    EXPECT_FALSE(grid->followEnd());
    QApplication::processEvents(); // steps queued before the stop are dropped harmlessly
}

namespace {

// What the viewport has painted since the last clear.
struct PaintLog : QObject {
    QRegion painted;
    int paints = 0;
    bool eventFilter(QObject *, QEvent *e) override
    {
        if (e->type() == QEvent::Paint) {
            painted += static_cast<QPaintEvent *>(e)->region();
            ++paints;
        }
        return false;
    }
};

// The viewport as the window shows it (the backing store, which keeps
// pixels moved by scroll()), and as a paint from scratch shows it.
QImage OnScreen(QWidget &window, RecordGrid *grid)
{
    const QPoint at = grid->viewport()->mapTo(&window, QPoint(0, 0));
    const QSize size = grid->viewport()->size();
    return QGuiApplication::primaryScreen()
        ->grabWindow(window.winId(), at.x(), at.y(), size.width(), size.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}
QImage Fresh(RecordGrid *grid) { return grid->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32); }

int Area(const QRegion &r)
{
    int a = 0;
    for (const QRect &rect : r)
        a += rect.width() * rect.height();
    return a;
}

} // namespace

TEST_F(GridFixture, LivePassesPaintTheNewRowsAndLeaveNothingStale)
{
    LiveLine line;
    // Every paint the window asked for is done.
    auto settle = [&](std::int64_t count) {
        EXPECT_TRUE(test::SpinUntil([&] { return grid->recordCount() == count; })) << count;
        for (int i = 0; i < 5; ++i) {
            QApplication::processEvents();
            std::this_thread::sleep_for(std::chrono::milliseconds(kIdleSleep.count() + 5));
        }
        QApplication::processEvents();
    };
    PaintLog log;
    grid->viewport()->installEventFilter(&log);
    grid->StartRedraw(&line.source);
    // Shorter than a page: the new MPs fill rows below the old ones.
    line.push(4);
    settle(4);
    EXPECT_EQ(OnScreen(window, grid), Fresh(grid));
    line.push(3);
    settle(7);
    EXPECT_EQ(OnScreen(window, grid), Fresh(grid));
    line.push(193);
    settle(200);
    EXPECT_EQ(OnScreen(window, grid), Fresh(grid));

    const int rowBytes = grid->viewport()->width() * kRowHeight;
    std::int64_t count = 200;
    for (const std::uint32_t added : {1u, 3u, 7u}) {
        log.painted = {};
        log.paints = 0;
        line.push(added);
        count += added;
        settle(count);
        // The new rows and the row before them are painted (rows moved up
        // keep their pixels), plus the current cell's row; not the page.
        EXPECT_GE(log.paints, 1) << added;
        EXPECT_GE(Area(log.painted), static_cast<int>(added) * rowBytes) << added;
        EXPECT_LE(Area(log.painted), static_cast<int>(added + 3) * rowBytes) << added;
        // And what the window shows is what a paint from scratch shows.
        ASSERT_EQ(OnScreen(window, grid), Fresh(grid)) << added;
    }

    // Many MPs at once, bursts while the GUI thread is busy, another view
    // and a moved current cell: still nothing stale on screen.
    grid->selectView(kViewDataDump);
    for (int burst = 0; burst < 20; ++burst) {
        line.push(37);
        if (burst % 4 == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(25)); // passes pile up: merged
        QApplication::processEvents();
    }
    count += 20 * 37;
    settle(count);
    EXPECT_EQ(OnScreen(window, grid), Fresh(grid));
    grid->selectView(kViewVertical);
    Press(grid, Qt::Key_Down);
    Press(grid, Qt::Key_Down);
    for (int burst = 0; burst < 10; ++burst) {
        line.push(2);
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
        QApplication::processEvents();
    }
    count += 20;
    settle(count);
    EXPECT_EQ(OnScreen(window, grid), Fresh(grid));
    // The newest MP is in the bottom row.
    EXPECT_NE(grid->fetchBuffer().Mp(static_cast<std::uint64_t>(count - 1)), nullptr);
    EXPECT_EQ(grid->position() + grid->rowCount() - 1, count - 1);
    grid->StopRedraw();
    grid->viewport()->removeEventFilter(&log);
}

namespace {

struct MemorySink : MpSink {
    std::mutex m;
    std::vector<std::uint8_t> bytes;
    std::size_t appendRecords(const std::uint8_t *data, std::size_t n) override
    {
        std::lock_guard lock(m);
        bytes.insert(bytes.end(), data, data + n);
        return n;
    }
};

} // namespace

TEST_F(GridFixture, FollowsTheRecordStoreWhileItWrites)
{
    ManualClock clock;
    RecordStore store(clock);
    MemorySink sink;
    store.setSink(&sink);
    ReceiveEvent event;
    StoreLiveSource source(store, event);
    store.ResetCounters();
    ASSERT_EQ(store.WriteSystemMark(SystemMark::NewFile, true), 0);
    ASSERT_EQ(store.WriteSystemMark(SystemMark::Started), 0);

    grid->StartRedraw(&source);
    EXPECT_EQ(store.liveBuffer().size(), static_cast<std::size_t>(grid->largeChange() + 2));
    for (int i = 0; i < 300; ++i) {
        ReceiveBurstGuard burst(event);
        ComEvent e;
        e.d1 = static_cast<std::uint8_t>('a' + i % 26);
        e.d1Valid = 1;
        e.s2 = i % 7 == 0;
        clock.advance(1'000'000);
        ASSERT_EQ(store.WriteMp(e, 0, false), 0);
    }
    ASSERT_TRUE(test::SpinUntil([&] { return grid->recordCount() == 302; }));
    EXPECT_EQ(grid->position(), 302 - grid->largeChange() - 1);
    const MpRecord *newest = grid->fetchBuffer().Mp(301);
    ASSERT_NE(newest, nullptr);
    EXPECT_EQ(newest->d1, static_cast<std::uint8_t>('a' + 299 % 26));
    grid->StopRedraw();
}

TEST_F(GridFixture, AWiderPageDuringARecordingFillsFromTheFile)
{
    // The live buffer was sized for the vertical view; the data-only view's
    // page holds far more MPs than it keeps. The file has them all.
    const std::uint32_t count = 3000;
    const std::string path = WriteRecording(dir, count);
    std::vector<MpRecord> all;
    for (std::uint32_t n = 0; n < count; ++n)
        all.push_back(CraftedMp(n, count - 1));
    std::atomic<std::uint32_t> written{count};
    std::size_t keep = 0;
    FunctionLiveSource source(
        [&] { return written.load(); }, [](std::chrono::milliseconds) { return true; },
        [&] { return std::vector<MpRecord>(all.end() - static_cast<std::ptrdiff_t>(keep), all.end()); },
        [&](std::size_t n) {
            if (keep == 0)
                keep = n; // the first wish only: the buffer does not grow later
        });
    ASSERT_TRUE(grid->OpenRecording(QString::fromStdString(path)));
    grid->StartRedraw(&source);
    ASSERT_GT(keep, 0u);
    grid->selectView(kViewDataOnly);
    ASSERT_GT(grid->largeChange(), static_cast<std::int64_t>(keep));
    EXPECT_EQ(grid->position(), count - grid->largeChange() - 1);
    // Every MP of the page is there, the first as much as the last.
    for (std::int64_t n = grid->position() + 1; n < count; ++n)
        ASSERT_NE(grid->fetchBuffer().Mp(static_cast<std::uint64_t>(n)), nullptr) << n;
    grid->StopRedraw();
}

TEST_F(GridFixture, MnemonicsAreNotCutOffByTheRow)
{
    // A grid row (16 px, its last pixel the grid line) shows as much ink as a
    // cell with room to spare; longer mnemonics draw nothing at all.
    const auto ink = [](const QImage &img, const QRect &r) {
        return CountPixels(img, r, [](QColor c) { return c.lightness() < 160; });
    };
    const auto paint = [](const char *m, int height) {
        QImage img(30, height, QImage::Format_RGB32);
        img.fill(Qt::white);
        QPainter p(&img);
        p.setPen(Qt::black);
        TextOutCmdChar(p, QRect(0, 0, 30, height), 1, 1, m);
        return img;
    };
    for (const char *m : {"LF", "NUL", "STX", "ESC"}) {
        const QImage tall = paint(m, 40);
        EXPECT_GE(ink(paint(m, 16), QRect(0, 0, 30, 15)), ink(tall, tall.rect()) * 9 / 10) << m;
    }
    const QImage res = paint("RES/ENP", 16);
    EXPECT_EQ(ink(res, res.rect()), 0);
}

TEST_F(GridFixture, RandomBytesPaintWithoutHarm)
{
    // Not a recording at all: every field holds garbage (NaN times, odd marks).
    const std::string path = dir.file("noise.ksr");
    {
        std::ofstream out(path, std::ios::binary);
        std::uint32_t x = 12345;
        for (int i = 0; i < 80 * 700 + 33; ++i) {
            x = x * 1103515245u + 12345u;
            out.put(static_cast<char>(x >> 24));
        }
    }
    ASSERT_TRUE(grid->OpenRecording(QString::fromStdString(path)));
    EXPECT_EQ(grid->recordCount(), 700);
    for (int view : {kViewVertical, kViewDataOnly, kViewDataDump}) {
        grid->selectView(view);
        for (int mode : {1, 2, 6}) {
            grid->setCharMode(mode);
            grid->modes().SetTimeMode(mode % 3);
            grid->scrollToEnd();
            EXPECT_FALSE(grid->viewport()->grab().isNull());
            EXPECT_FALSE(grid->statusLine().isEmpty());
        }
    }

}
