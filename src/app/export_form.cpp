#include "app/export_form.h"

#include <sys/stat.h>

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/background_sink.h"
#include "app/range_controls.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "config/port_value_lists.h"
#include "export/export_run.h"
#include "export/pcap_export.h"
#include "record/recording_check.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }
QString Q(const std::string &s) { return QString::fromStdString(s); }
QString Num(std::uint64_t v) { return QString::number(static_cast<qulonglong>(v)); }

// The event loop runs once per this many MPs: a few milliseconds of CSV lines, so the
// window answers at once, while the export itself runs at the speed of RunExport.
constexpr std::uint64_t kPumpInterval = 4096;

constexpr int kFormatRaw = 0; // the order of cbExportFormat's items
constexpr int kFormatCsv = 1;
constexpr int kFormatPcapng = 2;
constexpr int kFormatPcap = 3;

// The file types of the save dialog: name with mask, mask, extension, default name.
struct FileType {
    int name, mask, suffix, defaultName;
};
constexpr FileType kFileTypes[4] = {
    {8579, 8580, 8581, 8582}, {8583, 8584, 8585, 8586}, {7724, 7725, 7726, 8582}, {7727, 7728, 7729, 8582}};
// The file type of each format, in the order of cbExportFormat's items.
constexpr int kFileTypeOfFormat[4] = {1, 0, 2, 3};

// Dissectors Wireshark has for serial protocols; any other name may be typed.
constexpr const char *kDissectors[] = {"mbrtu", "dnp3"};

QString FilterOf(const FileType &t)
{
    const QString name = S(t.name);
    const QString mask = S(t.mask);
    return name.contains(mask) ? name : name + " (" + mask + ")";
}

bool SameFile(const std::string &a, const std::string &b)
{
    struct stat sa {}, sb {};
    return ::stat(a.c_str(), &sa) == 0 && ::stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
           sa.st_ino == sb.st_ino;
}

// The platform's save dialog. Kestrel asks about an existing file itself, with No as
// the default answer, so the dialog's own question is switched off.
QString AskWithFileDialog(QWidget *parent, const ExportFileQuestion &q)
{
    QFileDialog dialog(parent, q.title, q.startPath);
    dialog.setObjectName("ExportFile");
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setNameFilters(q.filters);
    if (q.selectedFilter < q.filters.size()) {
        dialog.selectNameFilter(q.filters[q.selectedFilter]);
        dialog.setDefaultSuffix(q.suffixes.value(q.selectedFilter));
    }
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog, &q](const QString &filter) {
        const auto i = q.filters.indexOf(filter);
        if (i >= 0)
            dialog.setDefaultSuffix(q.suffixes.value(i));
    });
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.selectedFiles().value(0);
}

} // namespace

TFormExport::TFormExport(Prompter &prompter, QWidget *parent)
    : ToolJobWindow(parent), prompter_(prompter)
{
    setObjectName("TFormExport");
    setModal(false);
    buildControls(); // F1 is the main window's Help action, which a tool window shares
    InitialLoads();
    refreshLimits();
    SetupActiveElements();
}

TFormExport::~TFormExport() { stop_ = true; }

void TFormExport::buildControls()
{
    auto check = [this](const char *name, QWidget *parent) {
        auto *c = new QCheckBox(parent);
        c->setObjectName(name);
        c->setChecked(true); // every column is on when the window comes up
        return c;
    };
    auto group = [this](const char *name) {
        auto *g = new QGroupBox(this);
        g->setObjectName(name);
        return g;
    };

    // Format, separator, frame and head line.
    lblExportFormat = new QLabel(this);
    lblExportFormat->setObjectName("lblExportFormat");
    cbExportFormat = new QComboBox(this);
    cbExportFormat->setObjectName("cbExportFormat");
    for (int i = 0; i < 4; ++i)
        cbExportFormat->addItem(QString());
    cbExportFormat->setCurrentIndex(kFormatCsv);
    lblExportFormat->setBuddy(cbExportFormat);
    connect(cbExportFormat, &QComboBox::currentIndexChanged, this, &TFormExport::cbExportFormatChange);

    gbSeparator = group("gbSeparator");
    rbComma = new QRadioButton(gbSeparator);
    rbComma->setObjectName("rbComma");
    rbSemicolon = new QRadioButton(gbSeparator);
    rbSemicolon->setObjectName("rbSemicolon");
    rbTabulator = new QRadioButton(gbSeparator);
    rbTabulator->setObjectName("rbTabulator");
    rbSpace = new QRadioButton(gbSeparator);
    rbSpace->setObjectName("rbSpace");
    rbSemicolon->setChecked(true);
    auto *sepGrid = new QGridLayout(gbSeparator);
    sepGrid->addWidget(rbComma, 0, 0);
    sepGrid->addWidget(rbSemicolon, 0, 1);
    sepGrid->addWidget(rbTabulator, 1, 0);
    sepGrid->addWidget(rbSpace, 1, 1);

    lblTextFrame = new QLabel(this);
    lblTextFrame->setObjectName("lblTextFrame");
    cbTextFrame = new QComboBox(this);
    cbTextFrame->setObjectName("cbTextFrame");
    cbTextFrame->addItem(QStringLiteral("\""), QVariant(static_cast<int>('"')));
    cbTextFrame->addItem(QStringLiteral("'"), QVariant(static_cast<int>('\'')));
    cbTextFrame->addItem(QString(), QVariant(static_cast<int>(kNoFrame)));
    cbTextFrame->setCurrentIndex(0);
    lblTextFrame->setBuddy(cbTextFrame);
    cbColumnHeader = check("cbColumnHeader", this);

    // Columns: prefix, data lines with their number columns, status lines, postfix.
    gbPrefix = group("gbPrefix");
    cbEventPrefix = check("cbEventPrefix", gbPrefix);
    cbEventMPNo = check("cbEventMPNo", gbPrefix);
    cbEventTimestamp = check("cbEventTimestamp", gbPrefix);
    auto *prefixBox = new QVBoxLayout(gbPrefix);
    for (QWidget *w : {cbEventPrefix, cbEventMPNo, cbEventTimestamp})
        prefixBox->addWidget(w);

    gbPostfix = group("gbPostfix");
    cbDescription = check("cbDescription", gbPostfix);
    (new QVBoxLayout(gbPostfix))->addWidget(cbDescription);

    gbDataLines = group("gbDataLines");
    cbEventD1 = check("cbEventD1", gbDataLines);
    cbEventD2 = check("cbEventD2", gbDataLines);
    auto *dataBox = new QVBoxLayout(gbDataLines);
    dataBox->addWidget(cbEventD1);
    dataBox->addWidget(cbEventD2);

    gbNumberColumns = group("gbNumberColumns");
    cbDataHEX = check("cbDataHEX", gbNumberColumns);
    cbDataDEC = check("cbDataDEC", gbNumberColumns);
    cbDataOCT = check("cbDataOCT", gbNumberColumns);
    cbDataBIN = check("cbDataBIN", gbNumberColumns);
    auto *numberRow = new QHBoxLayout(gbNumberColumns);
    for (auto [box, text] : {std::pair{cbDataHEX, "HEX"}, {cbDataDEC, "DEC"}, {cbDataOCT, "OCT"}, {cbDataBIN, "BIN"}}) {
        box->setText(QString::fromLatin1(text)); // the suffixes of the head line, the same in both languages
        numberRow->addWidget(box);
    }
    numberRow->addStretch(1);

    gbStatusLines = group("gbStatusLines");
    cbEventS1 = check("cbEventS1", gbStatusLines);
    cbEventM1 = check("cbEventM1", gbStatusLines);
    cbEventS2 = check("cbEventS2", gbStatusLines);
    cbEventM2 = check("cbEventM2", gbStatusLines);
    cbEventM5 = check("cbEventM5", gbStatusLines);
    cbEventM3 = check("cbEventM3", gbStatusLines);
    cbEventPFL = check("cbEventPFL", gbStatusLines);
    auto *statusGrid = new QGridLayout(gbStatusLines);
    const std::pair<QCheckBox *, const char *> lines[] = {{cbEventS1, "S1/DTR"}, {cbEventM1, "M1/DSR"},
                                                          {cbEventS2, "S2/RTS"}, {cbEventM2, "M2/CTS"},
                                                          {cbEventM5, "M5/DCD"}, {cbEventM3, "M3/RNG"}};
    for (int i = 0; i < 6; ++i) {
        lines[i].first->setText(QString::fromLatin1(lines[i].second)); // both namings, as the lines are labelled
        statusGrid->addWidget(lines[i].first, i / 3, i % 3);
    }
    statusGrid->addWidget(cbEventPFL, 2, 0, 1, 3);

    // Range.
    gbRange = group("gbRange");
    rbtMPAll = new QRadioButton(gbRange);
    rbtMPAll->setObjectName("rbtMPAll");
    rbtMPRange = new QRadioButton(gbRange);
    rbtMPRange->setObjectName("rbtMPRange");
    rbtMPAll->setChecked(true);
    rangeControls = new RangeControls(gbRange);
    auto *rangeBox = new QGridLayout(gbRange);
    rangeBox->addWidget(rbtMPAll, 0, 0);
    rangeBox->addWidget(rbtMPRange, 1, 0, Qt::AlignTop);
    rangeBox->addWidget(rangeControls, 1, 1);
    rangeBox->setColumnStretch(1, 1);
    connect(rbtMPRange, &QRadioButton::toggled, this, &TFormExport::SetupActiveElements);

    // Progress and buttons.
    ProgressBar1 = new QProgressBar(this);
    ProgressBar1->setObjectName("ProgressBar1");
    ProgressBar1->setRange(0, 100);
    ProgressBar1->setValue(0);
    lblExportState = new QLabel(this);
    lblExportState->setObjectName("lblExportState");
    lblExportState->setWordWrap(true);
    lblExportState->setTextInteractionFlags(Qt::TextSelectableByMouse);
    btnExport = new QPushButton(this);
    btnExport->setObjectName("btnExport");
    btnStop = new QPushButton(this);
    btnStop->setObjectName("btnStop");
    btnClose = new QPushButton(this);
    btnClose->setObjectName("btnClose");
    // Return in a range field only takes the number; it does not start an export.
    for (QPushButton *b : {btnExport, btnStop, btnClose})
        b->setAutoDefault(false);
    connect(btnExport, &QPushButton::clicked, this, &TFormExport::btnExportClick);
    connect(btnStop, &QPushButton::clicked, this, &TFormExport::btnStopClick);
    connect(btnClose, &QPushButton::clicked, this, &QWidget::close);

    // Layout: format settings and prefix on the left, data and status columns on the
    // right, the range and the progress across the whole width.
    auto *formatRow = new QHBoxLayout;
    formatRow->addWidget(lblExportFormat);
    formatRow->addWidget(cbExportFormat, 1);
    auto *frameRow = new QHBoxLayout;
    frameRow->addWidget(lblTextFrame);
    frameRow->addWidget(cbTextFrame, 1);
    auto *left = new QVBoxLayout;
    left->addLayout(formatRow);
    left->addWidget(gbSeparator);
    left->addLayout(frameRow);
    left->addWidget(cbColumnHeader);
    left->addWidget(gbPrefix);
    left->addStretch(1);
    auto *right = new QVBoxLayout;
    right->addWidget(gbDataLines);
    right->addWidget(gbNumberColumns);
    right->addWidget(gbStatusLines);
    right->addWidget(gbPostfix);
    right->addStretch(1);
    auto *columns = new QHBoxLayout;
    columns->addLayout(left, 1);
    columns->addSpacing(8);
    columns->addLayout(right, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(btnExport);
    buttons->addWidget(btnStop);
    buttons->addStretch(1);
    buttons->addWidget(btnClose);
    auto *all = new QVBoxLayout(this);
    all->addLayout(columns);
    all->addWidget(buildCaptureFrames());
    all->addWidget(gbRange);
    all->addWidget(ProgressBar1);
    all->addWidget(lblExportState);
    all->addLayout(buttons);
}

QWidget *TFormExport::buildCaptureFrames()
{
    gbCaptureFrames = new QGroupBox(this);
    gbCaptureFrames->setObjectName("gbCaptureFrames");
    auto label = [this](const char *name) {
        auto *l = new QLabel(gbCaptureFrames);
        l->setObjectName(name);
        return l;
    };
    auto combo = [this](const char *name, const std::vector<std::string> &items, bool editable) {
        auto *c = new QComboBox(gbCaptureFrames);
        c->setObjectName(name);
        c->setEditable(editable);
        for (const std::string &item : items)
            c->addItem(Q(item));
        return c;
    };
    auto field = [this](const char *name) {
        auto *e = new QLineEdit(gbCaptureFrames);
        e->setObjectName(name);
        return e;
    };
    lblBaudRate = label("lblBaudRate");
    cbBaudRate = combo("cbBaudRate", StandardBaudRates(), true);
    lblDataBits = label("lblDataBits");
    cbDataBits = combo("cbDataBits", StandardDataBits(), false);
    lblParity = label("lblParity");
    cbParity = combo("cbParity", StandardParities(), false);
    lblStopBits = label("lblStopBits");
    cbStopBits = combo("cbStopBits", StandardStopBits(), false);
    lblFrameGap = label("lblFrameGap");
    edtFrameGap = field("edtFrameGap");
    edtFrameGap->setPlaceholderText(QStringLiteral("3.5"));
    lblEndByte = label("lblEndByte");
    edtEndByte = field("edtEndByte");
    lblDissector = label("lblDissector");
    cbDissector = combo("cbDissector", {""}, true); // the first item is "{none}"
    for (const char *name : kDissectors)
        cbDissector->addItem(QString::fromLatin1(name));
    cbDissector->setInsertPolicy(QComboBox::NoInsert);
    takeLineSettings(PortComboTexts{});

    // Line settings in the first row, the frame rule in the second.
    auto *grid = new QGridLayout(gbCaptureFrames);
    const std::pair<QLabel *, QWidget *> cells[] = {
        {lblBaudRate, cbBaudRate}, {lblDataBits, cbDataBits}, {lblParity, cbParity}, {lblStopBits, cbStopBits},
        {lblFrameGap, edtFrameGap}, {lblEndByte, edtEndByte}, {lblDissector, cbDissector}};
    for (int i = 0; i < 7; ++i) {
        const int row = i / 4;
        const int col = (i % 4) * 2;
        cells[i].first->setBuddy(cells[i].second);
        grid->addWidget(cells[i].first, row, col);
        // The dissector takes the rest of its row: names like "mbrtu" and "{none}" need room.
        grid->addWidget(cells[i].second, row, col + 1, 1, i == 6 ? 3 : 1);
    }
    for (int col : {1, 3, 5, 7})
        grid->setColumnStretch(col, 1);
    return gbCaptureFrames;
}

void TFormExport::takeLineSettings(const PortComboTexts &line)
{
    cbBaudRate->setCurrentText(Q(line.baud));
    for (auto [box, text] : {std::pair{cbDataBits, &line.dataBits}, {cbParity, &line.parity}, {cbStopBits, &line.stopBits}}) {
        const int i = box->findText(Q(*text));
        if (i >= 0)
            box->setCurrentIndex(i);
    }
}

void TFormExport::InitialLoads()
{
    using namespace ExportFormMsg;
    setWindowTitle(S(Title));
    lblExportFormat->setText(S(Format));
    cbExportFormat->setItemText(kFormatRaw, S(FormatRaw));
    cbExportFormat->setItemText(kFormatCsv, S(FormatCsv));
    cbExportFormat->setItemText(kFormatPcapng, S(FormatPcapng));
    cbExportFormat->setItemText(kFormatPcap, S(FormatPcap));
    gbCaptureFrames->setTitle(S(CaptureFrames));
    lblBaudRate->setText(S(LineBaudRate));
    lblDataBits->setText(S(LineDataBits));
    lblParity->setText(S(LineParity));
    lblStopBits->setText(S(LineStopBits));
    for (QWidget *w : {static_cast<QWidget *>(cbBaudRate), static_cast<QWidget *>(cbDataBits),
                       static_cast<QWidget *>(cbParity), static_cast<QWidget *>(cbStopBits)})
        w->setToolTip(S(LineHint));
    lblFrameGap->setText(S(FrameGap));
    edtFrameGap->setToolTip(S(GapHint));
    lblEndByte->setText(S(EndByte));
    edtEndByte->setToolTip(S(EndByteHint));
    lblDissector->setText(S(Dissector));
    cbDissector->setItemText(0, S(NoDissector));
    cbDissector->setToolTip(S(DissectorHint));
    cbExportFormat->setToolTip(S(RawHint));
    gbSeparator->setTitle(S(Separator));
    rbComma->setText(S(Comma) + " ( , )");
    rbSemicolon->setText(S(Semicolon) + " ( ; )");
    rbTabulator->setText(S(Tabulator));
    rbSpace->setText(S(Space));
    lblTextFrame->setText(S(TextFrame));
    cbTextFrame->setItemText(2, S(NoFrame));
    cbColumnHeader->setText(S(ColumnHeader));
    gbDataLines->setTitle(S(DataLines));
    cbEventD1->setText(S(D1));
    cbEventD2->setText(S(D2));
    gbNumberColumns->setTitle(S(NumberColumns));
    gbStatusLines->setTitle(S(StatusLines));
    cbEventPFL->setText(S(LineErrors));
    gbPrefix->setTitle(S(Prefix));
    cbEventPrefix->setText(S(8155)); // the head line's own column names
    cbEventMPNo->setText(S(8156));
    cbEventTimestamp->setText(S(8157));
    gbPostfix->setTitle(S(Postfix));
    cbDescription->setText(S(8158));
    gbRange->setTitle(S(Range));
    rbtMPAll->setText(S(AllMps));
    rbtMPRange->setText(S(MpRange));
    btnExport->setText(S(ExportButton));
    btnStop->setText(S(StopButton));
    btnStop->setToolTip(S(StopHint));
    btnClose->setText(S(Close));
    rangeControls->InitialLoads();
    setState(stateNo_, stateArgs_); // what the last export said, now in this language
}

void TFormExport::setState(int textNo, const QStringList &args)
{
    stateNo_ = textNo;
    stateArgs_ = args;
    QString text = textNo != 0 ? S(textNo) : QString();
    for (const QString &a : args)
        text = text.arg(a);
    lblExportState->setText(text);
}

void TFormExport::refreshLimits()
{
    if (running_)
        return; // the range of a running export stays as it started
    std::uint64_t count = 0;
    if (source_) {
        RecordReader reader;
        if (reader.open(source_().recordFile))
            count = reader.recordCount();
    }
    const bool had = rangeControls->hasMps();
    if (count == 0)
        rangeControls->setLimits(1, 0);
    else
        rangeControls->setLimits(0, count - 1);
    if (count == 0)
        setState(ExportFormMsg::NoRecording);
    else if (!had)
        setState(0);
    SetupActiveElements();
}

void TFormExport::cbExportFormatChange() { SetupActiveElements(); }

void TFormExport::SetupActiveElements()
{
    // Raw mode writes the bare data bytes: only the data lines and the range count.
    // A capture file takes both data lines and every event; its frames are cut by
    // the line settings and the frame rule, and only pcapng has the dissector's interface.
    const bool csv = cbExportFormat->currentIndex() == kFormatCsv;
    const bool capture = captureFormat();
    for (QWidget *w : {static_cast<QWidget *>(gbSeparator), static_cast<QWidget *>(lblTextFrame),
                       static_cast<QWidget *>(cbTextFrame), static_cast<QWidget *>(cbColumnHeader),
                       static_cast<QWidget *>(gbNumberColumns), static_cast<QWidget *>(gbStatusLines),
                       static_cast<QWidget *>(gbPrefix), static_cast<QWidget *>(gbPostfix)})
        w->setEnabled(csv && !running_);
    for (QWidget *w : {static_cast<QWidget *>(lblExportFormat), static_cast<QWidget *>(cbExportFormat),
                       static_cast<QWidget *>(gbRange)})
        w->setEnabled(!running_);
    gbDataLines->setEnabled(!capture && !running_);
    gbCaptureFrames->setEnabled(capture && !running_);
    const bool pcapng = cbExportFormat->currentIndex() == kFormatPcapng;
    lblDissector->setEnabled(pcapng);
    cbDissector->setEnabled(pcapng);
    rangeControls->setEnabled(!running_ && rbtMPRange->isChecked() && rangeControls->hasMps());
    btnExport->setEnabled(!running_ && rangeControls->hasMps());
    btnStop->setEnabled(running_);
    btnClose->setEnabled(!running_);
}

ExportOptions TFormExport::options() const
{
    ExportOptions o;
    o.format = cbExportFormat->currentIndex() == kFormatRaw ? ExportFormat::Raw : ExportFormat::Csv;
    o.separator = rbComma->isChecked() ? ',' : rbTabulator->isChecked() ? '\t' : rbSpace->isChecked() ? ' ' : ';';
    o.frame = static_cast<char>(cbTextFrame->currentData().toInt());
    o.header = cbColumnHeader->isChecked();
    ExportColumns &c = o.columns;
    c.prefix = cbEventPrefix->isChecked();
    c.mpNo = cbEventMPNo->isChecked();
    c.timestamp = cbEventTimestamp->isChecked();
    c.d1 = cbEventD1->isChecked();
    c.d2 = cbEventD2->isChecked();
    c.hex = cbDataHEX->isChecked();
    c.dec = cbDataDEC->isChecked();
    c.oct = cbDataOCT->isChecked();
    c.bin = cbDataBIN->isChecked();
    c.s1 = cbEventS1->isChecked();
    c.m1 = cbEventM1->isChecked();
    c.s2 = cbEventS2->isChecked();
    c.m2 = cbEventM2->isChecked();
    c.m5 = cbEventM5->isChecked();
    c.m3 = cbEventM3->isChecked();
    c.pfl = cbEventPFL->isChecked();
    c.description = cbDescription->isChecked();
    if (source_) {
        const ExportSource src = source_();
        o.timeMode = src.timeMode;
        o.naming = src.naming;
    }
    o.langOffset = GlobalLang();
    return o;
}

bool TFormExport::captureFormat() const
{
    const int f = cbExportFormat->currentIndex();
    return f == kFormatPcapng || f == kFormatPcap;
}

CaptureFrameTexts TFormExport::captureTexts() const
{
    CaptureFrameTexts t;
    t.line = {cbBaudRate->currentText().toStdString(), cbDataBits->currentText().toStdString(),
              cbParity->currentText().toStdString(), cbStopBits->currentText().toStdString()};
    t.gap = edtFrameGap->text().toStdString();
    t.endByte = edtEndByte->text().toStdString();
    // "{none}" is the first item; a name typed over it counts.
    const QString dissector = cbDissector->currentText().trimmed();
    if (dissector != cbDissector->itemText(0))
        t.dissector = dissector.toStdString();
    return t;
}

std::uint64_t TFormExport::rangeFirst() const
{
    if (!rangeControls->hasMps())
        return 1; // after rangeLast(): nothing to export
    return rbtMPAll->isChecked() ? rangeControls->limits().first() : rangeControls->from();
}

std::uint64_t TFormExport::rangeLast() const
{
    if (!rangeControls->hasMps())
        return 0;
    return rbtMPAll->isChecked() ? rangeControls->limits().last() : rangeControls->to();
}

QString TFormExport::stateText() const { return lblExportState->text(); }

void TFormExport::btnStopClick() { stop_ = true; }

void TFormExport::btnExportClick()
{
    if (running_)
        return;
    // A number still being typed counts as if the field had been left.
    rangeControls->edtMPStartExit();
    rangeControls->edtMPStopExit();
    refreshLimits(); // the recording may have grown since the window opened
    if (!rangeControls->hasMps() || !source_) {
        fail(ExportFormMsg::CannotRead, S(ExportFormMsg::NoRecording));
        return;
    }
    const ExportSource src = source_();
    // A capture file's options are read before the save dialog: a typing error costs no file.
    Expected<PcapExportOptions> capture;
    if (captureFormat()) {
        capture = CaptureOptionsOf(captureTexts(), cbExportFormat->currentIndex() == kFormatPcapng);
        if (!capture) {
            fail(capture.result.code, Q(capture.result.detail));
            return;
        }
        capture.value.langOffset = GlobalLang();
    }
    const QString path = chooseTarget();
    if (path.isEmpty() || !confirmTarget(path))
        return;
    runExport(path, src, captureFormat() ? &capture.value : nullptr);
}

QString TFormExport::chooseTarget()
{
    const int typeNo = kFileTypeOfFormat[cbExportFormat->currentIndex()];
    const FileType &type = kFileTypes[typeNo];
    ExportFileQuestion q;
    q.title = S(ExportFormMsg::Title);
    for (const FileType &t : kFileTypes) {
        q.filters << FilterOf(t);
        q.suffixes << S(t.suffix);
    }
    q.selectedFilter = typeNo;
    const QString folder = lastFolder_.isEmpty() ? QDir::homePath() : lastFolder_;
    q.startPath = QDir(folder).filePath(S(type.defaultName) + "." + S(type.suffix));
    // The save dialog adds the chosen type's extension to a name typed without one.
    return chooseFile_ ? chooseFile_(q) : AskWithFileDialog(this, q);
}

bool TFormExport::confirmTarget(const QString &path)
{
    const std::string target = path.toStdString();
    struct stat st {};
    if (::stat(target.c_str(), &st) != 0)
        return true; // a new file; what keeps it from being created is reported when it is opened
    if (!S_ISREG(st.st_mode)) {
        // A folder cannot be written, and a pipe or a device would wait for a reader.
        fail(ExportFormMsg::NotAFile, path);
        return false;
    }
    if (source_ && SameFile(target, source_().recordFile)) {
        fail(ExportFormMsg::IsRecording, path);
        return false;
    }
    const QString question = S(ExportFormMsg::Replace).arg(path);
    return prompter_.ShowMessage(Str(3000), question.toStdString(), Buttons::YesNoDefaultNo, Icon::Warning) ==
           MsgResult::Yes;
}

void TFormExport::runExport(const QString &path, const ExportSource &src, const PcapExportOptions *capture)
{
    RecordReader reader;
    std::string error;
    if (!OpenRecording(reader, src.recordFile, error)) {
        fail(ExportFormMsg::CannotRead, Q(error)); // it names the file
        return;
    }
    const ExportRange range{rangeFirst(), rangeLast()};
    if (!ValidateRange(reader, range, error)) {
        fail(ExportFormMsg::BadRange, Q(error));
        return;
    }
    const ExportOptions o = options();
    // Opening cuts an existing file to length 0, which takes a while for a large one:
    // the window keeps answering meanwhile, and while the disk holds up a write or the close.
    BackgroundSink sink([] { QCoreApplication::processEvents(); });
    if (!sink.open(path.toStdString(), src.recordFile)) {
        fail(ExportFormMsg::CannotWrite, Q(sink.errorText()));
        return;
    }
    lastFolder_ = QFileInfo(path).absolutePath();
    ExportHooks hooks;
    hooks.stop = &stop_;
    hooks.pumpInterval = kPumpInterval;
    hooks.progress = [this](int percent) {
        if (ProgressBar1->value() != percent)
            ProgressBar1->setValue(percent);
        QCoreApplication::processEvents();
    };
    stop_ = false;
    ProgressBar1->setValue(0);
    setState(ExportFormMsg::Running, {Num(range.first), Num(range.last)});
    setRunning(true);
    ExportResult r;
    if (capture != nullptr) {
        r = RunPcapExport(reader, *capture, range, sink, hooks);
    } else {
        ExportTimeState time(TimeLocale::System(), o.langOffset);
        SeedExportTime(reader, range, time);
        r = RunExport(reader, o, range, sink, time, hooks);
    }
    setRunning(false);

    switch (r.status) {
    case ExportStatus::Done:
        ProgressBar1->setValue(100);
        setState(ExportFormMsg::Exported, {Num(r.exported), path});
        hide(); // done: the window closes, as after every export
        break;
    case ExportStatus::Stopped:
        setState(ExportFormMsg::Stopped, {Num(r.exported), path});
        break;
    case ExportStatus::BadRange:
        fail(ExportFormMsg::BadRange, Q(r.error));
        break;
    case ExportStatus::WriteFailed:
        fail(ExportFormMsg::CannotWrite, Q(r.error));
        break;
    }
}

void TFormExport::setRunning(bool on)
{
    running_ = on;
    SetupActiveElements();
}

void TFormExport::fail(int textNo, const QString &detail)
{
    setState(textNo, {detail});
    prompter_.ShowMessage(Str(3000), lblExportState->text().toStdString(), Buttons::Ok, Icon::Error);
}

void TFormExport::showEvent(QShowEvent *event)
{
    ToolJobWindow::showEvent(event);
    // A recording was most likely made with the settings the main window shows; what
    // was typed here stays while the same recording is exported again.
    if (source_ && !running_) {
        const ExportSource src = source_();
        if (src.recordFile != lineSettingsFor_) {
            takeLineSettings(src.line);
            lineSettingsFor_ = src.recordFile;
        }
    }
}

} // namespace kestrel
