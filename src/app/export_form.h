#pragma once
// The export window: writes the loaded recording, or a range of it, as the
// raw data stream (.dat), as CSV lines with a free choice of columns (.csv),
// or as a capture file for Wireshark (.pcapng, .pcap) with the frames cut by
// the line settings, gap and end byte given (the line settings start as the
// main window shows them when the window opens for another recording). Its controls keep the names of the form's components (cbExportFormat,
// rbSemicolon, cbEventD1, edtMPStart, btnStop, ...) as objectName.
//
// An export runs on the GUI thread through the same engine as
// `kestrel-cli export` (RunExport or RunPcapExport over a RecordReader, the
// capture options read by CaptureOptionsOf, into a background writer); its
// progress hook lets the event loop run every few thousand MPs, so the window
// stays alive and btnStop ends the export at the next such point. A target
// file that exists is replaced only after the user said yes; a target that
// cannot be created or written gives one message and leaves everything else
// as it was. It is a tool window of the main window, which keeps its
// placement in [EXWindow].

#include <QDialog>
#include <QString>
#include <QStringList>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "capture/capture.h"
#include "app/tool_job_window.h"
#include "config/program_config.h"
#include "export/capture_frame_texts.h"
#include "export/export_options.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;

namespace kestrel {

class Prompter;
class RangeControls;

// Text numbers of the export window.
namespace ExportFormMsg {
inline constexpr int Title = 7910;
inline constexpr int Format = 7911;
inline constexpr int FormatRaw = 7912;
inline constexpr int FormatCsv = 7913;
inline constexpr int Separator = 7914;
inline constexpr int Comma = 7915;
inline constexpr int Semicolon = 7916;
inline constexpr int Tabulator = 7917;
inline constexpr int Space = 7918;
inline constexpr int TextFrame = 7919;
inline constexpr int NoFrame = 7920; // "{keine}"
inline constexpr int ColumnHeader = 7921;
inline constexpr int DataLines = 7922;
inline constexpr int D1 = 7923;
inline constexpr int D2 = 7924;
inline constexpr int NumberColumns = 7925;
inline constexpr int StatusLines = 7926;
inline constexpr int LineErrors = 7927;
inline constexpr int Prefix = 7928;
inline constexpr int Postfix = 7929;
inline constexpr int Range = 7930;
inline constexpr int AllMps = 7931;
inline constexpr int MpRange = 7932;
inline constexpr int Close = 7933;
inline constexpr int Exported = 7934;      // %1 MPs exported to %2
inline constexpr int Stopped = 7935;       // stopped after %1 MPs; %2 holds only these
inline constexpr int Replace = 7936;       // the file %1 exists: replace it?
inline constexpr int CannotWrite = 7937;   // the export file cannot be written: %1
inline constexpr int NotAFile = 7938;      // the target is not a regular file: %1
inline constexpr int CannotRead = 7939;    // the recording cannot be exported: %1
inline constexpr int Running = 7940;       // exporting MPs %1 to %2 ...
inline constexpr int RawHint = 7941;       // tooltip of the format box
inline constexpr int StopHint = 7942;      // tooltip of btnStop
inline constexpr int IsRecording = 7943;   // the target is the recording itself: %1
inline constexpr int ExportButton = 7542;  // "&Export..."
inline constexpr int StopButton = 7552;    // "Stop"
inline constexpr int NoRecording = 7731;   // "No recording open"
inline constexpr int BadRange = 8590;      // the export range cannot be read
inline constexpr int FormatPcapng = 7700;
inline constexpr int FormatPcap = 7701;
inline constexpr int CaptureFrames = 7702; // group of the capture files' frame options
inline constexpr int FrameGap = 7703;
inline constexpr int EndByte = 7704;
inline constexpr int Dissector = 7705;
inline constexpr int NoDissector = 7706; // "{none}"
inline constexpr int LineBaudRate = 7712;
inline constexpr int LineDataBits = 7713;
inline constexpr int LineParity = 7714;
inline constexpr int LineStopBits = 7715;
inline constexpr int LineHint = 7716;      // tooltip of the line settings
inline constexpr int GapHint = 7717;
inline constexpr int EndByteHint = 7718;
inline constexpr int DissectorHint = 7719;
// 7720-7723: what cannot be read (CaptureFrameMsg)
// The save dialog's file types: name, mask, extension, default name (CSV, DAT, pcapng, pcap).
inline constexpr int CsvFileType = 8579;
inline constexpr int DatFileType = 8583;
inline constexpr int PcapngFileType = 7724;
inline constexpr int PcapFileType = 7727;
} // namespace ExportFormMsg

// What is exported and how the main window shows it at the moment of the export.
struct ExportSource {
    std::string recordFile;
    int timeMode = 0; // the grid's time display mode
    int naming = 0;   // circuit names (0) or pin names (1)
    PortComboTexts line; // the line settings the main window shows
};

// The save dialog's question: title, the file types (CSV, DAT, pcapng, pcap), the one to
// preselect, and the folder and name to start with.
struct ExportFileQuestion {
    QString title;
    QStringList filters;
    int selectedFilter = 0;
    QStringList suffixes; // default extension of each file type
    QString startPath;
};

class TFormExport final : public ToolJobWindow {
    Q_OBJECT
public:
    // Answers the save dialog's question with a path, or empty for Cancel.
    using FileChooser = std::function<QString(const ExportFileQuestion &)>;

    explicit TFormExport(Prompter &prompter, QWidget *parent = nullptr);
    ~TFormExport() override;

    void setSourceProvider(std::function<ExportSource()> provider) { source_ = std::move(provider); }
    void setFileChooser(FileChooser chooser) { chooseFile_ = std::move(chooser); }

    // The settings as the controls show them (the options of `kestrel-cli export`).
    [[nodiscard]] ExportOptions options() const;
    // The capture file's frame options as typed (only for pcapng and pcap).
    [[nodiscard]] CaptureFrameTexts captureTexts() const;
    // The MPs an export would write now; first > last when the recording holds none.
    [[nodiscard]] std::uint64_t rangeFirst() const;
    [[nodiscard]] std::uint64_t rangeLast() const;
    [[nodiscard]] bool isExporting() const { return running_; }
    [[nodiscard]] QString stateText() const;

    void refreshLimits() override;

    void InitialLoads(); // texts in the current language

public slots:
    void btnExportClick();
    void btnStopClick();
    void cbExportFormatChange();
    void SetupActiveElements();

protected:
    void showEvent(QShowEvent *event) override;
    [[nodiscard]] bool jobRunning() const override { return running_; }

private:
    void buildControls();
    [[nodiscard]] QWidget *buildCaptureFrames();
    void takeLineSettings(const PortComboTexts &line);
    [[nodiscard]] bool captureFormat() const;
    [[nodiscard]] QString chooseTarget();
    [[nodiscard]] bool confirmTarget(const QString &path);
    void runExport(const QString &path, const ExportSource &src, const PcapExportOptions *capture);
    void setRunning(bool on);
    void fail(int textNo, const QString &detail);
    // The line under the progress bar: a text number and its arguments, kept so that a
    // language switch can say it again; 0 for none.
    void setState(int textNo, const QStringList &args = {});

    Prompter &prompter_;
    std::function<ExportSource()> source_;
    FileChooser chooseFile_;
    bool running_ = false;
    QString lastFolder_;
    std::string lineSettingsFor_; // the recording the line settings were taken for
    int stateNo_ = 0;
    QStringList stateArgs_;

    // components (names kept as objectName)
    QLabel *lblExportFormat = nullptr;
    QComboBox *cbExportFormat = nullptr;
    QGroupBox *gbSeparator = nullptr;
    QRadioButton *rbComma = nullptr;
    QRadioButton *rbSemicolon = nullptr;
    QRadioButton *rbTabulator = nullptr;
    QRadioButton *rbSpace = nullptr;
    QLabel *lblTextFrame = nullptr;
    QComboBox *cbTextFrame = nullptr;
    QCheckBox *cbColumnHeader = nullptr;
    QGroupBox *gbDataLines = nullptr;
    QCheckBox *cbEventD1 = nullptr;
    QCheckBox *cbEventD2 = nullptr;
    QGroupBox *gbNumberColumns = nullptr;
    QCheckBox *cbDataHEX = nullptr;
    QCheckBox *cbDataDEC = nullptr;
    QCheckBox *cbDataOCT = nullptr;
    QCheckBox *cbDataBIN = nullptr;
    QGroupBox *gbStatusLines = nullptr;
    QCheckBox *cbEventS1 = nullptr;
    QCheckBox *cbEventM1 = nullptr;
    QCheckBox *cbEventS2 = nullptr;
    QCheckBox *cbEventM2 = nullptr;
    QCheckBox *cbEventM5 = nullptr;
    QCheckBox *cbEventM3 = nullptr;
    QCheckBox *cbEventPFL = nullptr;
    QGroupBox *gbPrefix = nullptr;
    QCheckBox *cbEventPrefix = nullptr;
    QCheckBox *cbEventMPNo = nullptr;
    QCheckBox *cbEventTimestamp = nullptr;
    QGroupBox *gbPostfix = nullptr;
    QCheckBox *cbDescription = nullptr;
    QGroupBox *gbCaptureFrames = nullptr;
    QLabel *lblBaudRate = nullptr;
    QComboBox *cbBaudRate = nullptr;
    QLabel *lblDataBits = nullptr;
    QComboBox *cbDataBits = nullptr;
    QLabel *lblParity = nullptr;
    QComboBox *cbParity = nullptr;
    QLabel *lblStopBits = nullptr;
    QComboBox *cbStopBits = nullptr;
    QLabel *lblFrameGap = nullptr;
    QLineEdit *edtFrameGap = nullptr;
    QLabel *lblEndByte = nullptr;
    QLineEdit *edtEndByte = nullptr;
    QLabel *lblDissector = nullptr;
    QComboBox *cbDissector = nullptr;
    QGroupBox *gbRange = nullptr;
    QRadioButton *rbtMPAll = nullptr;
    QRadioButton *rbtMPRange = nullptr;
    RangeControls *rangeControls = nullptr;
    QProgressBar *ProgressBar1 = nullptr;
    QLabel *lblExportState = nullptr;
    QPushButton *btnExport = nullptr;
    QPushButton *btnStop = nullptr;
    QPushButton *btnClose = nullptr;
};

} // namespace kestrel
