// The report window, driven by objectName on the offscreen platform: what it
// saves and prints is the report library's own for the choices made in it, a
// long report stops at once and the window answers meanwhile, no PDF is
// replaced without a yes, the preview holds only its first pages and says so,
// and [REWindow] through the main window.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPrinter>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>
#include <fstream>

#include "app/action_registry.h"
#include "app/main_form.h"
#include "app/report_form.h"
#include "app/report_preview.h"
#include "base/string_table.h"
#include "config/ini_file.h"
#include "present/byte_render.h"
#include "report/report_printer.h"
#include "support/event_loop.h"
#include "support/recording_builder.h"
#include "support/scripted_prompter.h"
#include "support/stale_language.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

int g_argc = 1;
char g_arg0[] = "test_report_form";
char *g_argv[] = {g_arg0, nullptr};
const QApplication *const g_app = new QApplication(g_argc, g_argv);

QString S(int n) { return QString::fromStdString(Str(n)); }

// Text of every kind in a few MPs (both circuits, control bytes, a level change, a
// trigger mark, a gap of an hour), then `extra` plain MPs.
void WriteRecording(const std::string &path, int extra)
{
    test::RecordingBuilder b(45000.5, 0.25);
    b.d1('A').d2(0x01).both(0x0D, 0xE9).level(1, 1).d1('x').mark(1, 0, 4);
    b.level(4, 1).d2(0x7F).gap(3600.0).d1(0x00);
    for (int i = 0; i < extra; ++i)
        b.both(static_cast<std::uint8_t>('a' + i % 26), static_cast<std::uint8_t>(i * 7));
    b.write(path);
}

// The text of a PDF, in reading order, without the minute it was printed.
std::string PdfText(const std::string &pdf)
{
    QProcess p;
    p.start("pdftotext", {QString::fromStdString(pdf), "-"});
    EXPECT_TRUE(p.waitForFinished(60000)) << pdf;
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    static const QRegularExpression printedOn("Printed on [^\\n]*");
    return QString::fromUtf8(p.readAllStandardOutput()).replace(printedOn, "Printed on").toStdString();
}

struct Window {
    test::TempDir dir;
    std::string rec = dir.file("rec.ksr");
    test::ScriptedPrompter prompter{MsgResult::No};
    TFormReport form{prompter};
    ReportSource source;
    QString target = QString::fromStdString(dir.file("out.pdf"));

    explicit Window(int extraMps = 20)
    {
        SetGlobalLang(kLangEnglish);
        WriteRecording(rec, extraMps);
        source.recordFile = rec;
        source.header = {"Pump line 7 audit", "R. Tester", "Works Ltd", "Harbour Board", {"first note", "second note"}};
        source.charMode = CharMode::Hex;
        source.controlMode = Overlay::Caret;
        source.timeMode = 1;
        form.setSourceProvider([this] { return source; });
        form.setFileChooser([this](const ReportFileQuestion &) { return target; });
        form.show();
    }
    template <class T> T *find(const char *name) { return form.findChild<T *>(name); }
    void click(const char *name) { find<QAbstractButton>(name)->click(); }
    void typeInto(const char *field, const QString &text)
    {
        QLineEdit *e = find<QLineEdit>(field);
        e->setText(text);
        emit e->textEdited(text);
        emit e->editingFinished();
    }
    [[nodiscard]] bool waitUntilIdle(int ms = 60000)
    {
        return test::SpinUntil([this] { return !form.isRunning(); }, ms);
    }
};

} // namespace

// Range, body, parts, paper and orientation reach the report: the PDF saved from the
// window and the one printed through it read as the library's for the same choices.
TEST(ReportForm, SavedAndPrintedReportsAreTheLibrarysForTheChoicesMade)
{
    Window w(300);
    w.click("rbtMPRange");
    w.typeInto("edtMPStart", "5");
    w.typeInto("edtMPStop", "250");
    w.click("rbDump");
    w.click("cbSummary"); // off
    w.click("rbLetter");
    w.click("rbLandscape");

    report::ReportRequest expected;
    expected.recording = w.rec;
    expected.header = w.source.header;
    expected.first = 5;
    expected.last = 250;
    expected.body = report::ReportBody::Dump;
    expected.withSummary = false;
    expected.charMode = CharMode::Hex;
    expected.controlMode = Overlay::Caret;
    expected.timeMode = 1;
    expected.lang = kLangEnglish;
    expected.paper = report::PaperSize::Letter;
    expected.landscape = true;
    const std::string library = w.dir.file("library.pdf");
    const auto made = report::WriteReportPdf(library, expected);
    ASSERT_TRUE(made.ok()) << made.result.detail;
    const std::string want = PdfText(library);
    ASSERT_NE(want.find("Pump line 7 audit"), std::string::npos) << want;

    w.click("btnSavePdf");
    EXPECT_FALSE(w.find<QWidget>("btnPrint")->isEnabled()) << "one report at a time";
    ASSERT_TRUE(w.waitUntilIdle());
    EXPECT_EQ(PdfText(w.target.toStdString()), want);
    EXPECT_EQ(w.form.stateText(), S(ReportFormMsg::Saved).arg(made.value.pages).arg(w.target));

    const QString printed = QString::fromStdString(w.dir.file("printed.pdf"));
    w.form.setPrinterChooser([&](QPrinter &p) {
        EXPECT_EQ(p.pageLayout().pageSize().id(), QPageSize::Letter) << "the dialog opens on the paper chosen";
        p.setOutputFormat(QPrinter::PdfFormat);
        p.setOutputFileName(printed);
        return true;
    });
    w.click("btnPrint");
    ASSERT_TRUE(w.waitUntilIdle());
    EXPECT_EQ(PdfText(printed.toStdString()), want);
    EXPECT_TRUE(w.prompter.asked.empty());
}

// A report of 100,000 MPs runs beside the window: its progress moves, and Stop ends it
// within a second.
TEST(ReportForm, StopEndsALongReportAtOnce)
{
    Window w(100000);
    auto *bar = w.find<QProgressBar>("ProgressBar1");
    w.click("btnSavePdf");
    ASSERT_TRUE(w.form.isRunning());
    ASSERT_TRUE(test::SpinUntil([bar] { return bar->value() >= 1; }, 60000)) << "the event loop ran meanwhile";
    ASSERT_TRUE(w.form.isRunning());
    QElapsedTimer sinceStop;
    sinceStop.start();
    w.click("btnStop");
    ASSERT_TRUE(w.waitUntilIdle(5000));
    EXPECT_LT(sinceStop.elapsed(), 1000);
    EXPECT_TRUE(w.form.stateText().startsWith("Stopped after")) << w.form.stateText().toStdString();
    EXPECT_FALSE(std::filesystem::exists(w.target.toStdString())) << "no PDF of half a report";
    EXPECT_TRUE(w.find<QWidget>("btnSavePdf")->isEnabled());
}

// An existing PDF is replaced only after a yes; another file is the library's to refuse,
// with its message, and stays as it was.
TEST(ReportForm, NoFileIsReplacedWithoutYes)
{
    Window w;
    const std::string old = "%PDF-1.4 an older report";
    std::ofstream(w.target.toStdString()) << old;
    w.click("btnSavePdf");
    ASSERT_EQ(w.prompter.asked.size(), 1u);
    EXPECT_EQ(w.prompter.asked[0].buttons, Buttons::YesNoDefaultNo);
    EXPECT_FALSE(w.form.isRunning());
    EXPECT_EQ(test::ReadWholeFile(w.target.toStdString()), old);

    w.target = QString::fromStdString(w.dir.file("notes.txt"));
    std::ofstream(w.target.toStdString()) << "my notes";
    w.click("btnSavePdf");
    ASSERT_TRUE(w.waitUntilIdle());
    ASSERT_EQ(w.prompter.asked.size(), 2u) << "no question first, then the refusal";
    EXPECT_EQ(w.prompter.asked[1].icon, Icon::Error);
    EXPECT_EQ(test::ReadWholeFile(w.target.toStdString()), "my notes");

    w.target = QString::fromStdString(w.dir.file("out.pdf"));
    w.prompter.answerNext(MsgResult::Yes);
    w.click("btnSavePdf");
    ASSERT_TRUE(w.waitUntilIdle());
    EXPECT_EQ(PdfText(w.target.toStdString()).find("older"), std::string::npos);
}

// The preview paints no more than its pages and says that there are more; a report that
// fits shows without the note. Both it and the window follow a language switch.
TEST(ReportForm, PreviewShowsItsFirstPagesAndSaysSo)
{
    Window w(3000);
    w.form.setPreviewPages(2);
    w.click("btnPreview");
    ReportPreview *preview = w.form.preview();
    ASSERT_NE(preview, nullptr);
    ASSERT_TRUE(test::SpinUntil([preview] { return !preview->isRendering(); }, 30000));
    EXPECT_EQ(preview->pageCount(), 2);
    EXPECT_TRUE(preview->outcome().truncated);
    EXPECT_EQ(preview->noteText(), S(ReportFormMsg::PreviewTruncated).arg(2));

    w.click("rbtMPRange");
    w.typeInto("edtMPStart", "0");
    w.typeInto("edtMPStop", "3");
    w.click("cbDetails");
    w.click("cbSummary");
    w.click("btnPreview");
    ASSERT_TRUE(test::SpinUntil([preview] { return !preview->isRendering(); }, 30000));
    EXPECT_EQ(preview->pageCount(), 1);
    EXPECT_TRUE(preview->noteText().isEmpty());

    for (auto [now, other] : {std::pair{kLangGerman, kLangEnglish}, {kLangEnglish, kLangGerman}}) {
        SetGlobalLang(now);
        w.form.InitialLoads();
        EXPECT_EQ(test::StaleTexts(&w.form, other), QStringList());
        EXPECT_EQ(test::StaleTexts(preview, other), QStringList());
    }
}

// The main window: Ctrl+P opens the window where [REWindow] put it, with the grid's
// modes; a recording closes it, and the save writes where it stands.
TEST(ReportForm, MainWindowKeepsItsPlaceAndClosesItForARecording)
{
    test::TempDir dir;
    std::filesystem::create_directories(dir.path() / "recordings");
    std::ofstream(dir.path() / "Kestrel.ini") << "[REWindow]\nLeft=150\nTop=160\nWindowState=0\nVisible=1\n";
    test::ScriptedPrompter prompter{MsgResult::Yes};
    MainFormOptions o;
    o.args = ParseStartupArgs({"kestrel", "--simulate"});
    o.dataFolder = dir.path().string() + "/";
    o.prompter = &prompter;
    o.skipUnloadDelay = true;
    auto w = std::make_unique<TFormMain>(std::move(o));
    w->FormShow();
    auto *form = w->findChild<TFormReport *>("TFormReport");
    ASSERT_NE(form, nullptr);
    EXPECT_TRUE(form->isVisible()) << "open at the last save: open again";
    EXPECT_EQ(form->pos(), QPoint(150, 160));

    w->findChild<QToolButton *>("btnREC")->click();
    EXPECT_FALSE(form->isVisible());
    EXPECT_FALSE(w->actions().action("actPrintReport")->isEnabled());
    w->findChild<QToolButton *>("btnSTOP")->click();
    w->actions().action("actCharHex")->trigger();
    w->actions().action("actPrintReport")->trigger();
    ASSERT_TRUE(form->isVisible());
    const report::ReportRequest r = form->request();
    EXPECT_GT(r.last, 0u) << "the recording just made is there to report on";
    EXPECT_EQ(r.recording, w->recordFile());
    EXPECT_EQ(r.charMode, CharMode::Hex);
    form->move(230, 240);
    w->quitCleanly();
    const IniFile ini = IniFile::Parse(test::ReadWholeFile((dir.path() / "Kestrel.ini").string()));
    EXPECT_EQ(ini.ReadInteger("REWindow", "Left", 0), 230);
    EXPECT_EQ(ini.ReadInteger("REWindow", "Top", 0), 240);
    EXPECT_TRUE(ini.ReadBool("REWindow", "Visible", false));
}
