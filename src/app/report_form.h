#pragma once
// The report window: prints the loaded recording, or a range of it, with the
// environment's header, the recording's details, the body in one of the
// grid's views, a summary and a footer, on A4 or Letter. The body shows the
// characters, control characters and times as the main window shows them at
// the moment the report is made. The report library lays out and paints the
// pages; this window collects the choices and shows what came of them.
//
// Printing and saving as PDF run on a thread of their own, so the window
// answers throughout, the progress bar moves and btnStop ends the report at
// the next page. The preview opens beside it (ReportPreview) and holds only
// its first pages. A PDF file that exists is replaced only after the user
// said yes; one that is no PDF is refused by the report library with its
// message. It is a tool window of the main window, which keeps its placement
// in [REWindow].

#include <QDialog>
#include <QString>
#include <QStringList>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "base/result.h"
#include "app/tool_job_window.h"
#include "config/program_config.h"
#include "report/report_request.h"

class QGroupBox;
class QLabel;
class QPrinter;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QCheckBox;
class QTimer;

namespace kestrel {

class Prompter;
class RangeControls;
class ReportPreview;

// Text numbers of the report window and its preview.
namespace ReportFormMsg {
inline constexpr int Title = 7973;
inline constexpr int Body = 7974;
inline constexpr int Vertical = 7975;
inline constexpr int Dump = 7976;
inline constexpr int DataOnly = 7977;
inline constexpr int Parts = 7978;
inline constexpr int PartHeader = 7979;
inline constexpr int PartDetails = 7980;
inline constexpr int PartBody = 7981;
inline constexpr int PartSummary = 7982;
inline constexpr int PartFooter = 7983;
inline constexpr int Paper = 7984;
inline constexpr int A4 = 7985;
inline constexpr int Letter = 7986;
inline constexpr int Portrait = 7987;
inline constexpr int Landscape = 7988;
inline constexpr int Range = 7989;
inline constexpr int AllMps = 7990;
inline constexpr int MpRange = 7991;
inline constexpr int PreviewButton = 7992;
inline constexpr int PrintButton = 7993;
inline constexpr int PdfButton = 7994;
inline constexpr int StopButton = 7995;
inline constexpr int CloseButton = 7996;
inline constexpr int HelpButton = 7997;
inline constexpr int ModesNote = 7998;
inline constexpr int StopHint = 7999;
inline constexpr int PreviewTitle = 9341;
inline constexpr int PreviewTruncated = 9342; // the preview shows the first %1 pages
inline constexpr int Running = 9343;          // making the report of MPs %1 to %2
inline constexpr int PageOf = 9344;           // page %1 of %2
inline constexpr int Saved = 9345;            // %1 pages saved in %2
inline constexpr int Printed = 9346;          // %1 pages sent to %2
inline constexpr int Stopped = 9347;          // stopped after %1 pages
inline constexpr int Failed = 9348;           // the report cannot be made: %1
inline constexpr int Replace = 9349;          // the file %1 exists: replace it?
inline constexpr int PdfFilter = 9350;
inline constexpr int SaveTitle = 9351;
inline constexpr int DefaultName = 9352;
inline constexpr int NoRecording = 9353;
inline constexpr int PreviewRunning = 9354;
inline constexpr int ZoomIn = 9355;
inline constexpr int ZoomOut = 9356;
inline constexpr int WholePage = 9357;
inline constexpr int PreviousPage = 9358;
inline constexpr int NextPage = 9359;
inline constexpr int Orientation = 9360;
inline constexpr int PdfStopped = 9361;      // stopped after %1 pages; no PDF written
inline constexpr int FileTitle = 3000; // the message boxes' title, as for every file operation
} // namespace ReportFormMsg

// What a report is made of, asked when it starts: the recording in the grid, the
// grid's display modes and the environment's descriptive data.
struct ReportSource {
    std::string recordFile;
    int charMode = 0, controlMode = 0, secondaryMode = 3, timeMode = 0;
    int namingSet = 0; // circuit names (0) or pin names (1)
    report::ReportHeader header;
};

// The save dialog's question: title, the PDF file type and where to start.
struct ReportFileQuestion {
    QString title;
    QString filter;
    QString startPath;
};

class TFormReport final : public ToolJobWindow {
    Q_OBJECT
public:
    // Answers the save dialog's question with a path, or empty for Cancel.
    using FileChooser = std::function<QString(const ReportFileQuestion &)>;
    // Lets the user set up the printer (the print dialog); false for Cancel.
    using PrinterChooser = std::function<bool(QPrinter &)>;

    explicit TFormReport(Prompter &prompter, QWidget *parent = nullptr);
    ~TFormReport() override;

    void setSourceProvider(std::function<ReportSource()> provider) { source_ = std::move(provider); }
    void setFileChooser(FileChooser chooser) { chooseFile_ = std::move(chooser); }
    void setPrinterChooser(PrinterChooser chooser) { choosePrinter_ = std::move(chooser); }
    // Pages the preview holds at most; the rest is for printing and the PDF.
    void setPreviewPages(int pages) { previewPages_ = pages; }

    // The report the controls and the source describe now.
    [[nodiscard]] report::ReportRequest request() const;
    [[nodiscard]] bool isRunning() const { return worker_.joinable(); }
    [[nodiscard]] QString stateText() const;
    [[nodiscard]] ReportPreview *preview() const { return preview_; }

    void refreshLimits() override;

    void InitialLoads(); // texts in the current language

signals:
    void jobFinished(); // a print or a PDF has ended (done, stopped or failed)

public slots:
    void btnPreviewClick();
    void btnPrintClick();
    void btnSavePdfClick();
    void btnStopClick();
    void SetupActiveElements();

protected:
    void hideEvent(QHideEvent *event) override;
    [[nodiscard]] bool jobRunning() const override { return isRunning(); }

private:
    using Job = std::function<Expected<report::ReportOutcome>(const report::ReportProgressFn &)>;
    enum class Target { Printer, Pdf };

    void buildControls();
    [[nodiscard]] bool readyToStart(); // a recording with MPs; else says so
    [[nodiscard]] QString chooseTarget();
    [[nodiscard]] bool confirmTarget(const QString &path);
    void start(Target target, const QString &where, const report::ReportRequest &request, Job job);
    void finish(Target target, const QString &where, const Expected<report::ReportOutcome> &result);
    void showProgress();
    void fail(const QString &detail);
    void setState(int textNo, const QStringList &args = {});

    Prompter &prompter_;
    std::function<ReportSource()> source_;
    FileChooser chooseFile_;
    PrinterChooser choosePrinter_;
    int previewPages_ = 200;
    ReportPreview *preview_ = nullptr;

    // The running report: its thread, the printer it paints on, and what it reports back.
    std::thread worker_;
    std::unique_ptr<QPrinter> printer_;
    std::atomic<std::uint64_t> done_{0}, total_{0};
    QTimer *progressTimer_ = nullptr;

    QString lastFolder_;
    int stateNo_ = 0;
    QStringList stateArgs_;

    // components (names kept as objectName)
    QGroupBox *gbRange = nullptr;
    QRadioButton *rbtMPAll = nullptr;
    QRadioButton *rbtMPRange = nullptr;
    RangeControls *rangeControls = nullptr;
    QGroupBox *gbBody = nullptr;
    QRadioButton *rbVertical = nullptr;
    QRadioButton *rbDump = nullptr;
    QRadioButton *rbDataOnly = nullptr;
    QGroupBox *gbParts = nullptr;
    QCheckBox *cbHeader = nullptr;
    QCheckBox *cbDetails = nullptr;
    QCheckBox *cbBody = nullptr;
    QCheckBox *cbSummary = nullptr;
    QCheckBox *cbFooter = nullptr;
    QGroupBox *gbPaper = nullptr;
    QRadioButton *rbA4 = nullptr;
    QRadioButton *rbLetter = nullptr;
    QGroupBox *gbOrientation = nullptr;
    QRadioButton *rbPortrait = nullptr;
    QRadioButton *rbLandscape = nullptr;
    QLabel *lblModes = nullptr;
    QProgressBar *ProgressBar1 = nullptr;
    QLabel *lblReportState = nullptr;
    QPushButton *btnPreview = nullptr;
    QPushButton *btnPrint = nullptr;
    QPushButton *btnSavePdf = nullptr;
    QPushButton *btnStop = nullptr;
    QPushButton *btnClose = nullptr;
    QPushButton *btnHelp = nullptr;
};

} // namespace kestrel
