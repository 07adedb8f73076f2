// The export window and its range controls, driven by objectName on the
// offscreen platform: the same bytes as kestrel-cli export, a stop that ends an
// export at once, no file replaced without a yes, one message for a target that
// cannot be written, which controls each format takes, capture files as
// kestrel-cli writes them and tshark reads them, and [EXWindow] through the
// main window.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QToolButton>
#include <algorithm>
#include <csignal>
#include <fstream>
#include <sstream>

#include "app/action_registry.h"
#include "app/background_sink.h"
#include "app/export_form.h"
#include "app/main_form.h"
#include "app/range_controls.h"
#include "base/string_table.h"
#include "config/ini_file.h"
#include "support/recording_builder.h"
#include "support/run_cli.h"
#include "support/scripted_prompter.h"
#include "support/stale_language.h"
#include "support/temp_dir.h"
#include "support/widget_app.h"

using namespace kestrel;

namespace {

const QApplication &g_app = test::WidgetApp(); // before the first widget

// A recording with something in every column: both circuits, a double quote, control
// bytes, level changes, errors, a trigger mark; then `extra` plain MPs.
void WriteRecording(const std::string &path, int extra = 0)
{
    test::RecordingBuilder b(45000.5, 0.25);
    b.d1('"').d2(0x01).both(0x0D, 0xE9).level(1, 1).d1('x').mark(1, 0, 4);
    b.last().peD1 = 1;
    b.level(4, 1).d2(0x7F).gap(3600.0).d1(0x00);
    b.last().feD2 = b.last().leD1 = 1;
    for (int i = 0; i < extra; ++i)
        b.both(static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i * 7));
    b.write(path);
}

struct Dialog {
    test::TempDir dir;
    std::string rec = dir.file("rec.ksr");
    test::ScriptedPrompter prompter{MsgResult::No};
    TFormExport form{prompter};
    ExportSource source;
    QString target = QString::fromStdString(dir.file("out.csv"));
    int chooserCalls = 0;

    explicit Dialog(int extraMps = 0)
    {
        SetGlobalLang(kLangEnglish);
        WriteRecording(rec, extraMps);
        source.recordFile = rec;
        form.setSourceProvider([this] { return source; });
        form.setFileChooser([this](const ExportFileQuestion &) {
            ++chooserCalls;
            return target;
        });
        form.show();
    }
    template <class T> T *find(const char *name) { return form.findChild<T *>(name); }
    void check(const char *name, bool on) { find<QAbstractButton>(name)->setChecked(on); }
    void typeInto(const char *field, const QString &text)
    {
        QLineEdit *e = find<QLineEdit>(field);
        e->setText(text);
        emit e->textEdited(text);
        emit e->editingFinished();
    }
    void exportNow() { find<QPushButton>("btnExport")->click(); }
};

// kestrel-cli export RECORDING -o OUT with more arguments; what it wrote.
std::string RunCli(const std::string &recording, const std::string &out, const std::vector<std::string> &more,
                   const test::TempDir &dir)
{
    std::vector<std::string> args{"export", recording, "-o", out};
    args.insert(args.end(), more.begin(), more.end());
    const std::string log = dir.file("cli.log");
    const int code = test::WaitCli(test::StartCli(KESTREL_CLI_PATH, args, log));
    EXPECT_EQ(code, 0) << test::ReadWholeFile(log);
    return test::ReadWholeFile(out);
}

} // namespace

// The defaults of the settings show in the bytes of the tests below (the head line of an
// export with them, and the same bytes as kestrel-cli export with its defaults).
TEST(ExportForm, RawFormatRestsTheCsvControls)
{
    Dialog d;
    EXPECT_EQ(d.form.rangeLast(), 8u);
    const char *csvOnly[] = {"gbSeparator", "cbTextFrame", "cbColumnHeader", "cbDataHEX", "cbEventS1",
                             "cbEventPFL", "cbEventPrefix", "cbEventMPNo", "cbEventTimestamp", "cbDescription"};
    const char *always[] = {"cbExportFormat", "cbEventD1", "cbEventD2", "rbtMPAll", "rbtMPRange", "btnExport"};
    d.find<QComboBox>("cbExportFormat")->setCurrentIndex(0); // raw
    for (const char *n : csvOnly)
        EXPECT_FALSE(d.find<QWidget>(n)->isEnabled()) << n;
    for (const char *n : always)
        EXPECT_TRUE(d.find<QWidget>(n)->isEnabled()) << n;
    EXPECT_FALSE(d.find<QWidget>("btnStop")->isEnabled());
    EXPECT_FALSE(d.find<QWidget>("edtMPStart")->isEnabled()) << "all MPs: the range fields rest";
    d.check("rbtMPRange", true);
    EXPECT_TRUE(d.find<QWidget>("edtMPStart")->isEnabled());
    EXPECT_FALSE(d.find<QWidget>("cbBaudRate")->isEnabled());
    d.find<QComboBox>("cbExportFormat")->setCurrentIndex(1);
    for (const char *n : csvOnly)
        EXPECT_TRUE(d.find<QWidget>(n)->isEnabled()) << n;

    // A capture file takes every event: neither CSV columns nor data lines apply, the
    // frame options do; the dissector's second interface exists in pcapng alone.
    for (const int format : {2, 3}) {
        d.find<QComboBox>("cbExportFormat")->setCurrentIndex(format);
        for (const char *n : csvOnly)
            EXPECT_FALSE(d.find<QWidget>(n)->isEnabled()) << n;
        EXPECT_FALSE(d.find<QWidget>("cbEventD1")->isEnabled());
        for (const char *n : {"cbBaudRate", "cbParity", "edtFrameGap", "edtEndByte", "btnExport"})
            EXPECT_TRUE(d.find<QWidget>(n)->isEnabled()) << n;
        EXPECT_EQ(d.find<QWidget>("cbDissector")->isEnabled(), format == 2);
    }
}

TEST(ExportForm, ALanguageSwitchLeavesNoTextOfTheOtherLanguage)
{
    Dialog d;
    d.target = QString::fromStdString(d.dir.file("no/such/folder/out.csv"));
    d.exportNow(); // the line under the progress bar says why
    d.find<QLineEdit>("edtMPStart")->setText("x");
    for (auto [now, other] : {std::pair{kLangGerman, kLangEnglish}, {kLangEnglish, kLangGerman}}) {
        SetGlobalLang(now);
        d.form.InitialLoads();
        EXPECT_EQ(test::StaleTexts(&d.form, other), QStringList());
    }
    EXPECT_TRUE(d.form.stateText().startsWith("The export file cannot be written"));
}

// The dialog and kestrel-cli, given the same settings, write the same bytes.
TEST(ExportForm, WritesTheSameBytesAsTheCommandLine)
{
    Dialog d(40);
    const std::string out = d.target.toStdString();
    const std::string cli = d.dir.file("cli.out");

    // CSV: comma, single quote, no octal and no M5, MPs 5 to 40, relative time, RS-232 names.
    d.source.timeMode = 1;
    d.source.naming = 1;
    d.check("rbComma", true);
    d.find<QComboBox>("cbTextFrame")->setCurrentIndex(1);
    d.check("cbDataOCT", false);
    d.check("cbEventM5", false);
    d.check("rbtMPRange", true);
    d.typeInto("edtMPStop", "40");
    d.typeInto("edtMPStart", "5");
    d.exportNow();
    EXPECT_FALSE(d.form.isVisible()) << "a finished export closes the window";
    EXPECT_EQ(d.prompter.asked.size(), 0u);
    const std::string csv = test::ReadWholeFile(out);
    EXPECT_EQ(csv, RunCli(d.rec, cli, {"--separator", "comma", "--frame", "single", "--columns",
                           "-oct,-m5", "--range", "5:40", "--time", "relative", "--naming", "rs232", "--language",
                           "en"},
                          d.dir));
    EXPECT_NE(csv.find("'Tx [RAW]',"), std::string::npos);

    // Absolute time, no frame, tab, no head line, German, everything.
    SetGlobalLang(kLangGerman);
    d.form.show();
    d.source = {d.rec, 0, 0};
    d.prompter.answerNext(MsgResult::Yes); // replace the first export
    d.check("rbTabulator", true);
    d.find<QComboBox>("cbTextFrame")->setCurrentIndex(2);
    d.check("cbColumnHeader", false);
    d.check("cbDataOCT", true);
    d.check("cbEventM5", true);
    d.check("rbtMPAll", true);
    d.exportNow();
    EXPECT_EQ(test::ReadWholeFile(out), RunCli(d.rec, cli, {"--separator", "tab", "--frame", "none",
                                     "--no-header", "--language", "de"},
                                    d.dir));

    // Raw data stream without D1: the D2 bytes back to back.
    d.form.show();
    d.prompter.answerNext(MsgResult::Yes);
    d.find<QComboBox>("cbExportFormat")->setCurrentIndex(0);
    d.check("cbEventD1", false);
    d.exportNow();
    const std::string raw = test::ReadWholeFile(out);
    EXPECT_EQ(raw, RunCli(d.rec, cli, {"--format", "raw", "--columns", "-d1"}, d.dir));
    EXPECT_EQ(raw.substr(0, 3), std::string("\x01\xE9\x7F", 3));
}

// Bursts on D1 with a pause that ends a frame at 19200 baud but not at 9600, an answer
// on D2 that LF cuts in two, and a trigger mark: frames and comments show whether the
// window's settings arrive.
void WriteBursts(const std::string &path)
{
    test::RecordingBuilder b(45000.5, 0.001);
    for (int burst = 0; burst < 6; ++burst) {
        b.d1(0x01).d1(0x03).d1(static_cast<std::uint8_t>(burst)).gap(0.0015).d1(0xC4).d1(0x0B);
        b.gap(0.004).d2(0x0A).d2(0x41).mark(1, 0, 2).gap(0.05);
    }
    b.write(path);
}

TEST(ExportForm, CaptureFilesAreTheCommandLinesAndTsharkReadsThem)
{
    Dialog d;
    WriteBursts(d.rec);
    d.form.refreshLimits();
    const std::string cli = d.dir.file("cli.pcapng");
    d.target = QString::fromStdString(d.dir.file("out.pcapng"));
    std::vector<ExportFileQuestion> asked;
    d.form.setFileChooser([&](const ExportFileQuestion &q) {
        asked.push_back(q);
        return d.target;
    });

    // A typing error costs neither a save dialog nor a file: one message says which field.
    auto *format = d.find<QComboBox>("cbExportFormat");
    format->setCurrentIndex(2);
    d.find<QLineEdit>("edtFrameGap")->setText("2,5");
    d.exportNow();
    ASSERT_EQ(d.prompter.asked.size(), 1u);
    EXPECT_NE(d.prompter.asked[0].text.find("gap"), std::string::npos) << d.prompter.asked[0].text;
    EXPECT_NE(d.prompter.asked[0].text.find("2,5"), std::string::npos);
    EXPECT_TRUE(asked.empty());
    d.prompter.asked.clear();
    d.find<QLineEdit>("edtFrameGap")->setText("2.5");
    d.find<QComboBox>("cbDissector")->setCurrentText("mb rtu");
    d.exportNow();
    ASSERT_EQ(d.prompter.asked.size(), 1u);
    EXPECT_NE(d.prompter.asked[0].text.find("mb rtu"), std::string::npos);

    // pcapng with all frame options: the bytes of kestrel-cli with the same options.
    d.prompter.asked.clear();
    d.find<QComboBox>("cbBaudRate")->setCurrentText("19200");
    d.find<QComboBox>("cbParity")->setCurrentText("E");
    d.find<QLineEdit>("edtEndByte")->setText("<LF>");
    d.find<QComboBox>("cbDissector")->setCurrentText("mbrtu");
    d.exportNow();
    EXPECT_EQ(d.prompter.asked.size(), 0u);
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_TRUE(asked[0].filters.value(asked[0].selectedFilter).contains("*.pcapng"));
    EXPECT_EQ(asked[0].suffixes.value(asked[0].selectedFilter), "pcapng");
    const std::string ng = test::ReadWholeFile(d.target.toStdString());
    EXPECT_EQ(ng, RunCli(d.rec, cli, {"--format", "pcapng", "--baud", "19200", "--parity", "E", "--gap", "2.5",
                                      "--end-byte", "0A", "--protocol", "mbrtu", "--language", "en"},
                         d.dir));
    EXPECT_NE(ng, RunCli(d.rec, d.dir.file("cli-9600.pcapng"), {"--format", "pcapng", "--gap", "2.5", "--end-byte", "0A", "--protocol", "mbrtu",
                                      "--language", "en"},
                         d.dir))
        << "the line settings cut these frames differently at 9600 baud";

    // Classic pcap: no dissector even when one is typed, and an existing file needs a yes.
    // The settings typed stay while the same recording is exported again.
    d.form.show();
    format->setCurrentIndex(3);
    d.target = QString::fromStdString(d.dir.file("out.pcap"));
    std::ofstream(d.target.toStdString()) << "someone's capture";
    d.exportNow();
    ASSERT_EQ(d.prompter.asked.size(), 1u);
    EXPECT_EQ(test::ReadWholeFile(d.target.toStdString()), "someone's capture");
    d.prompter.answerNext(MsgResult::Yes);
    d.exportNow();
    EXPECT_EQ(asked.back().suffixes.value(asked.back().selectedFilter), "pcap");
    const std::string classic = test::ReadWholeFile(d.target.toStdString());
    EXPECT_EQ(classic, RunCli(d.rec, d.dir.file("cli.pcap"),
                              {"--format", "pcap", "--baud", "19200", "--parity", "E", "--gap", "2.5", "--end-byte",
                               "0A", "--language", "en"},
                              d.dir));

    if (!test::HaveTshark())
        GTEST_SKIP() << "tshark is not installed (apt-get install tshark)";
    // Every frame is a TX or RX packet on interface 0 and again on interface 1 for the dissector.
    const test::CliRun r = test::RunCapture(
        "tshark", "-r '" + cli + "' -T fields -e frame.interface_id -e rtacser.eventtype -e frame.comment", {}, false);
    ASSERT_EQ(r.code, 0) << r.out;
    int frames = 0, again = 0, comments = 0;
    std::istringstream in(r.out);
    for (std::string line; std::getline(in, line);) {
        frames += line.rfind("0\t0x01\t", 0) == 0 || line.rfind("0\t0x02\t", 0) == 0;
        again += line.rfind("1\t", 0) == 0;
        comments += !line.empty() && line.back() != '\t';
    }
    EXPECT_EQ(frames, 6 * 4) << r.out; // each burst: D1 in two, LF, then "A"
    EXPECT_EQ(again, frames);
    EXPECT_EQ(comments, 6 + 2) << r.out; // the trigger marks, start and stop
}

TEST(ExportForm, StopAndClosingEndARunningExportAtOnce)
{
    Dialog d(400000);
    const std::string out = d.target.toStdString();
    auto *bar = d.find<QProgressBar>("ProgressBar1");
    for (const bool byClosing : {false, true}) {
        SCOPED_TRACE(byClosing ? "closing the window" : "btnStop");
        d.form.show();
        d.prompter.answerNext(MsgResult::Yes);
        int percentAtStop = -1;
        auto conn = QObject::connect(bar, &QProgressBar::valueChanged, [&](int v) {
            if (v >= 20 && percentAtStop < 0) {
                percentAtStop = v;
                EXPECT_TRUE(d.form.isExporting());
                EXPECT_FALSE(d.find<QWidget>("btnExport")->isEnabled());
                byClosing ? (void)d.form.close() : d.find<QPushButton>("btnStop")->click();
            }
        });
        d.exportNow();
        QObject::disconnect(conn);
        ASSERT_GE(percentAtStop, 20);
        EXPECT_FALSE(d.form.isExporting());
        EXPECT_TRUE(d.form.stateText().contains("stopped")) << d.form.stateText().toStdString();
        // What was written is whole lines, the head line and MP 0 onwards, and no more
        // than one pump interval past the stop.
        const std::string text = test::ReadWholeFile(out);
        const auto lines = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
        EXPECT_EQ(text.substr(text.size() - 2), "\r\n");
        const std::uint64_t total = 400009 + 1; // MPs and the head line
        EXPECT_LE(lines, total * static_cast<std::uint64_t>(percentAtStop + 1) / 100 + 4096 + 1);
        EXPECT_LT(lines, total / 2);
    }
}

TEST(ExportForm, AnExistingFileIsReplacedOnlyAfterYes)
{
    Dialog d;
    const std::string out = d.target.toStdString();
    std::ofstream(out) << "precious";
    d.exportNow(); // the prompter answers No
    ASSERT_EQ(d.prompter.asked.size(), 1u);
    EXPECT_EQ(d.prompter.asked[0].buttons, Buttons::YesNoDefaultNo);
    EXPECT_NE(d.prompter.asked[0].text.find(out), std::string::npos);
    EXPECT_EQ(test::ReadWholeFile(out), "precious");
    EXPECT_TRUE(d.form.isVisible());

    // The recording itself, a folder and a pipe are never targets: one message each, nothing asked.
    const std::string recording = test::ReadWholeFile(d.rec);
    const std::string fifo = d.dir.file("pipe");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string &target : {d.rec, d.dir.path().string(), fifo}) {
        d.prompter.asked.clear();
        d.target = QString::fromStdString(target);
        d.exportNow();
        ASSERT_EQ(d.prompter.asked.size(), 1u) << target;
        EXPECT_EQ(d.prompter.asked[0].buttons, Buttons::Ok);
        EXPECT_EQ(d.prompter.asked[0].icon, Icon::Error);
    }
    EXPECT_EQ(test::ReadWholeFile(d.rec), recording);

    d.prompter.asked.clear();
    d.target = QString::fromStdString(out);
    d.prompter.answerNext(MsgResult::Yes);
    d.exportNow();
    EXPECT_EQ(test::ReadWholeFile(out).rfind("\"Mark/Trigger\";", 0), 0u);
}

TEST(ExportForm, ATargetThatCannotBeWrittenGivesOneMessage)
{
    Dialog d(60000); // some 6 MB of CSV: several flushes
    d.target = QString::fromStdString(d.dir.file("no/such/folder/out.csv"));
    d.exportNow();
    ASSERT_EQ(d.prompter.asked.size(), 1u);
    EXPECT_NE(d.prompter.asked[0].text.find("cannot be written"), std::string::npos);
    EXPECT_NE(d.prompter.asked[0].text.find("No such file or directory"), std::string::npos);
    EXPECT_TRUE(d.form.isVisible());

    // A full disk: the file may grow to 1 MiB, then every write fails.
    d.prompter.asked.clear();
    d.target = QString::fromStdString(d.dir.file("full.csv"));
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 1u << 20;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    d.exportNow();
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    ASSERT_EQ(d.prompter.asked.size(), 1u);
    EXPECT_NE(d.prompter.asked[0].text.find("too large"), std::string::npos) << d.prompter.asked[0].text;
    EXPECT_FALSE(d.form.isExporting());
    EXPECT_TRUE(d.find<QWidget>("btnExport")->isEnabled());
}

// A disk that holds up the writer (here a pipe nobody reads yet) holds up the export,
// never the window: the caller runs the event loop all the while.
TEST(BackgroundSink, TheCallerKeepsPumpingWhileTheWriterIsHeldUp)
{
    test::TempDir dir;
    const std::string fifo = dir.file("slow");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    int pumps = 0;
    int reader = -1;
    std::string got;
    auto drain = [&] {
        char buf[4096];
        for (ssize_t n; (n = ::read(reader, buf, sizeof buf)) > 0;)
            got.append(buf, static_cast<std::size_t>(n));
    };
    BackgroundSink sink(
        [&] {
            if (++pumps == 3)
                reader = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK); // the open on the writer thread waited for this
            else if (reader >= 0)
                drain();
        },
        64);
    ASSERT_TRUE(sink.open(fifo));
    EXPECT_GE(pumps, 3);
    const int pumpsWhileOpening = pumps;
    std::string sent;
    for (int i = 0; i < 300; ++i) { // 300 KB, several times what the pipe holds
        const std::string chunk(1000, static_cast<char>('a' + i % 26));
        ASSERT_TRUE(sink.write(chunk));
        sent += chunk;
    }
    EXPECT_TRUE(sink.finish());
    ::fcntl(reader, F_SETFL, 0);
    drain();
    ::close(reader);
    EXPECT_EQ(got, sent);
    // Only the pump reads the pipe: the writes could not have got through without it.
    EXPECT_GT(pumps, pumpsWhileOpening);
}

TEST(RangeControls, FieldsAndBarsFollowEachOtherOverTenBillionMps)
{
    SetGlobalLang(kLangEnglish);
    RangeControls r;
    r.setLimits(0, 9'999'999'999);
    auto *start = r.findChild<QLineEdit *>("edtMPStart");
    auto *stop = r.findChild<QLineEdit *>("edtMPStop");
    auto *startBar = r.findChild<QSlider *>("tbMPStart");
    auto *stopBar = r.findChild<QSlider *>("tbMPStop");
    EXPECT_EQ(stop->text(), "9999999999");
    EXPECT_EQ(stopBar->value(), stopBar->maximum());

    auto leave = [](QLineEdit *e, const QString &text) {
        e->setText(text);
        emit e->textEdited(text);
        emit e->editingFinished();
    };
    leave(stop, "7777777777");
    EXPECT_NEAR(stopBar->value(), 0.7777777777 * stopBar->maximum(), 1.0);
    // Moving the other bar leaves this end exactly where it was typed.
    startBar->setValue(startBar->maximum() / 4);
    EXPECT_EQ(r.to(), 7'777'777'777u);
    EXPECT_EQ(stop->text(), "7777777777");
    EXPECT_NEAR(static_cast<double>(r.from()), 2.5e9, 10.0);
    EXPECT_EQ(start->text().toULongLong(), r.from());

    // Garbage goes back to the last valid value, with a note; a number outside is clamped.
    const std::uint64_t before = r.from();
    leave(start, "12x");
    EXPECT_EQ(start->text().toULongLong(), before);
    EXPECT_TRUE(r.hint().contains("12x")) << r.hint().toStdString();
    leave(stop, "99999999999");
    EXPECT_EQ(r.to(), 9'999'999'999u);
    EXPECT_TRUE(r.hint().contains("outside"));
    // The start pushes the stop, the step buttons move one MP, reset takes everything.
    leave(start, "9999999999");
    EXPECT_EQ(r.from(), 9'999'999'999u);
    r.findChild<QToolButton *>("btnStopDown")->click();
    EXPECT_EQ(r.to(), 9'999'999'998u);
    EXPECT_EQ(r.from(), 9'999'999'998u);
    r.findChild<QToolButton *>("btnStopUp")->click();
    r.findChild<QToolButton *>("btnStopUp")->click();
    EXPECT_EQ(r.to(), 9'999'999'999u);
    r.findChild<QToolButton *>("btnResetRange")->click();
    EXPECT_EQ(r.from(), 0u);
    EXPECT_EQ(startBar->value(), 0);
    EXPECT_TRUE(r.hint().isEmpty());

    // One MP: everything stands on it; none: the controls rest.
    r.setLimits(3, 3);
    EXPECT_EQ(r.from(), 3u);
    EXPECT_EQ(r.to(), 3u);
    r.setLimits(1, 0);
    EXPECT_FALSE(start->isEnabled());
}

// The main window: Ctrl+E opens the window where [EXWindow] put it, a recording
// closes it, and the save writes where it stands.
TEST(ExportForm, MainWindowKeepsItsPlaceAndClosesItForARecording)
{
    test::TempDir dir;
    std::filesystem::create_directories(dir.path() / "recordings");
    std::ofstream(dir.path() / "Kestrel.ini") << "[EXWindow]\nLeft=130\nTop=140\nWindowState=0\nVisible=1\n";
    test::ScriptedPrompter prompter{MsgResult::Yes};
    MainFormOptions o;
    o.args = ParseStartupArgs({"kestrel", "--simulate"});
    o.dataFolder = dir.path().string() + "/";
    o.prompter = &prompter;
    o.skipUnloadDelay = true;
    auto w = std::make_unique<TFormMain>(std::move(o));
    w->FormShow();
    auto *form = w->findChild<TFormExport *>("TFormExport");
    ASSERT_NE(form, nullptr);
    EXPECT_TRUE(form->isVisible()) << "open at the last save: open again";
    EXPECT_EQ(form->pos(), QPoint(130, 140));

    w->findChild<QToolButton *>("btnREC")->click();
    EXPECT_FALSE(form->isVisible());
    EXPECT_FALSE(w->actions().action("actExportToFile")->isEnabled());
    w->findChild<QToolButton *>("btnSTOP")->click();
    w->actions().action("actExportToFile")->trigger();
    ASSERT_TRUE(form->isVisible());
    EXPECT_GT(form->rangeLast(), 0u) << "the recording just made is there to export";
    form->move(210, 220);
    w->quitCleanly();
    const IniFile ini = IniFile::Parse(test::ReadWholeFile((dir.path() / "Kestrel.ini").string()));
    EXPECT_EQ(ini.ReadInteger("EXWindow", "Left", 0), 210);
    EXPECT_EQ(ini.ReadInteger("EXWindow", "Top", 0), 220);
    EXPECT_TRUE(ini.ReadBool("EXWindow", "Visible", false));
}
