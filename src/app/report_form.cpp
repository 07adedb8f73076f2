#include "app/report_form.h"

#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPrintDialog>
#include <QPrinter>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>

#include "app/app_log.h"
#include "app/help_request.h"
#include "app/range_controls.h"
#include "app/report_preview.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "record/record_reader.h"
#include "report/report_printer.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }
QString Num(std::uint64_t v) { return QString::number(static_cast<qulonglong>(v)); }

QString ResultText(const Result &r)
{
    return QString::fromStdString(Str(r.code) + (r.detail.empty() ? "" : "\n" + r.detail));
}

// The platform's save dialog. Kestrel asks about an existing file itself, with No as
// the default answer, so the dialog's own question is switched off.
QString AskWithFileDialog(QWidget *parent, const ReportFileQuestion &q)
{
    QFileDialog dialog(parent, q.title, q.startPath);
    dialog.setObjectName("ReportFile");
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setNameFilter(q.filter);
    dialog.setDefaultSuffix("pdf");
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.selectedFiles().value(0);
}

// The desktop's print dialog, started on the paper the window chose.
bool AskWithPrintDialog(QWidget *parent, QPrinter &printer)
{
    QPrintDialog dialog(&printer, parent);
    dialog.setObjectName("ReportPrint");
    dialog.setOption(QAbstractPrintDialog::PrintToFile, true);
    return dialog.exec() == QDialog::Accepted;
}

} // namespace

TFormReport::TFormReport(Prompter &prompter, QWidget *parent)
    : ToolJobWindow(parent), prompter_(prompter)
{
    setObjectName("TFormReport");
    setModal(false);
    progressTimer_ = new QTimer(this);
    progressTimer_->setInterval(100);
    connect(progressTimer_, &QTimer::timeout, this, &TFormReport::showProgress);
    buildControls();
    InitialLoads();
    refreshLimits();
    SetupActiveElements();
}

TFormReport::~TFormReport()
{
    stop_ = true;
    if (worker_.joinable())
        worker_.join(); // ends at the next page
}

void TFormReport::buildControls()
{
    auto group = [this](const char *name) {
        auto *g = new QGroupBox(this);
        g->setObjectName(name);
        return g;
    };
    auto radio = [](const char *name, QWidget *parent) {
        auto *r = new QRadioButton(parent);
        r->setObjectName(name);
        return r;
    };
    auto check = [](const char *name, QWidget *parent) {
        auto *c = new QCheckBox(parent);
        c->setObjectName(name);
        c->setChecked(true); // a full report unless the user leaves parts out
        return c;
    };

    gbBody = group("gbBody");
    rbVertical = radio("rbVertical", gbBody);
    rbDump = radio("rbDump", gbBody);
    rbDataOnly = radio("rbDataOnly", gbBody);
    rbVertical->setChecked(true);
    auto *bodyBox = new QVBoxLayout(gbBody);
    for (QWidget *w : {rbVertical, rbDump, rbDataOnly})
        bodyBox->addWidget(w);

    gbParts = group("gbParts");
    cbHeader = check("cbHeader", gbParts);
    cbDetails = check("cbDetails", gbParts);
    cbBody = check("cbBody", gbParts);
    cbSummary = check("cbSummary", gbParts);
    cbFooter = check("cbFooter", gbParts);
    auto *partsBox = new QVBoxLayout(gbParts);
    for (QWidget *w : {cbHeader, cbDetails, cbBody, cbSummary, cbFooter})
        partsBox->addWidget(w);
    connect(cbBody, &QCheckBox::toggled, this, &TFormReport::SetupActiveElements);

    gbPaper = group("gbPaper");
    rbA4 = radio("rbA4", gbPaper);
    rbLetter = radio("rbLetter", gbPaper);
    // Letter where the system's measures are American, A4 everywhere else.
    (QLocale::system().measurementSystem() == QLocale::ImperialUSSystem ? rbLetter : rbA4)->setChecked(true);
    auto *paperBox = new QVBoxLayout(gbPaper);
    paperBox->addWidget(rbA4);
    paperBox->addWidget(rbLetter);

    gbOrientation = group("gbOrientation");
    rbPortrait = radio("rbPortrait", gbOrientation);
    rbLandscape = radio("rbLandscape", gbOrientation);
    rbPortrait->setChecked(true);
    auto *orientationBox = new QVBoxLayout(gbOrientation);
    orientationBox->addWidget(rbPortrait);
    orientationBox->addWidget(rbLandscape);

    gbRange = group("gbRange");
    rbtMPAll = radio("rbtMPAll", gbRange);
    rbtMPRange = radio("rbtMPRange", gbRange);
    rbtMPAll->setChecked(true);
    rangeControls = new RangeControls(gbRange);
    auto *rangeBox = new QGridLayout(gbRange);
    rangeBox->addWidget(rbtMPAll, 0, 0);
    rangeBox->addWidget(rbtMPRange, 1, 0, Qt::AlignTop);
    rangeBox->addWidget(rangeControls, 1, 1);
    rangeBox->setColumnStretch(1, 1);
    connect(rbtMPRange, &QRadioButton::toggled, this, &TFormReport::SetupActiveElements);

    lblModes = new QLabel(this);
    lblModes->setObjectName("lblModes");
    lblModes->setWordWrap(true);
    ProgressBar1 = new QProgressBar(this);
    ProgressBar1->setObjectName("ProgressBar1");
    ProgressBar1->setRange(0, 100);
    ProgressBar1->setValue(0);
    lblReportState = new QLabel(this);
    lblReportState->setObjectName("lblReportState");
    lblReportState->setWordWrap(true);
    lblReportState->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto button = [this](const char *name) {
        auto *b = new QPushButton(this);
        b->setObjectName(name);
        b->setAutoDefault(false); // Return in a range field only takes the number
        return b;
    };
    btnPreview = button("btnPreview");
    btnPrint = button("btnPrint");
    btnSavePdf = button("btnSavePdf");
    btnStop = button("btnStop");
    btnHelp = button("btnHelp");
    btnClose = button("btnClose");
    connect(btnPreview, &QPushButton::clicked, this, &TFormReport::btnPreviewClick);
    connect(btnPrint, &QPushButton::clicked, this, &TFormReport::btnPrintClick);
    connect(btnSavePdf, &QPushButton::clicked, this, &TFormReport::btnSavePdfClick);
    connect(btnStop, &QPushButton::clicked, this, &TFormReport::btnStopClick);
    connect(btnHelp, &QPushButton::clicked, this, [this] { ShowHelpFor(this); });
    connect(btnClose, &QPushButton::clicked, this, &QWidget::close);

    // Layout: the body's view, paper and orientation on the left, the parts on the
    // right, the range and the progress across the whole width.
    auto *paperRow = new QHBoxLayout;
    paperRow->addWidget(gbPaper, 1);
    paperRow->addWidget(gbOrientation, 1);
    auto *left = new QVBoxLayout;
    left->addWidget(gbBody);
    left->addLayout(paperRow);
    left->addStretch(1);
    auto *right = new QVBoxLayout;
    right->addWidget(gbParts);
    right->addStretch(1);
    auto *columns = new QHBoxLayout;
    columns->addLayout(left, 1);
    columns->addSpacing(8);
    columns->addLayout(right, 1);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *b : {btnPreview, btnPrint, btnSavePdf, btnStop})
        buttons->addWidget(b);
    buttons->addStretch(1);
    buttons->addWidget(btnHelp);
    buttons->addWidget(btnClose);
    auto *all = new QVBoxLayout(this);
    all->addLayout(columns);
    all->addWidget(gbRange);
    all->addWidget(lblModes);
    all->addWidget(ProgressBar1);
    all->addWidget(lblReportState);
    all->addLayout(buttons);
}

void TFormReport::InitialLoads()
{
    using namespace ReportFormMsg;
    setWindowTitle(S(Title));
    gbBody->setTitle(S(Body));
    rbVertical->setText(S(Vertical));
    rbDump->setText(S(Dump));
    rbDataOnly->setText(S(DataOnly));
    gbParts->setTitle(S(Parts));
    cbHeader->setText(S(PartHeader));
    cbDetails->setText(S(PartDetails));
    cbBody->setText(S(PartBody));
    cbSummary->setText(S(PartSummary));
    cbFooter->setText(S(PartFooter));
    gbPaper->setTitle(S(Paper));
    rbA4->setText(S(A4));
    rbLetter->setText(S(Letter));
    gbOrientation->setTitle(S(Orientation));
    rbPortrait->setText(S(Portrait));
    rbLandscape->setText(S(Landscape));
    gbRange->setTitle(S(Range));
    rbtMPAll->setText(S(AllMps));
    rbtMPRange->setText(S(MpRange));
    lblModes->setText(S(ModesNote));
    btnPreview->setText(S(PreviewButton));
    btnPrint->setText(S(PrintButton));
    btnSavePdf->setText(S(PdfButton));
    btnStop->setText(S(StopButton));
    btnStop->setToolTip(S(StopHint));
    btnHelp->setText(S(HelpButton));
    btnClose->setText(S(CloseButton));
    rangeControls->InitialLoads();
    if (preview_ != nullptr)
        preview_->InitialLoads();
    setState(stateNo_, stateArgs_); // what the last report said, now in this language
}

void TFormReport::setState(int textNo, const QStringList &args)
{
    stateNo_ = textNo;
    stateArgs_ = args;
    QString text = textNo != 0 ? S(textNo) : QString();
    for (const QString &a : args)
        text = text.arg(a);
    lblReportState->setText(text);
}

QString TFormReport::stateText() const { return lblReportState->text(); }

void TFormReport::refreshLimits()
{
    if (isRunning())
        return; // the range of a running report stays as it started
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
        setState(ReportFormMsg::NoRecording);
    else if (!had)
        setState(0);
    SetupActiveElements();
}

void TFormReport::SetupActiveElements()
{
    const bool idle = !isRunning();
    const bool ready = idle && rangeControls->hasMps();
    for (QWidget *w : {static_cast<QWidget *>(gbParts), static_cast<QWidget *>(gbPaper),
                       static_cast<QWidget *>(gbOrientation), static_cast<QWidget *>(gbRange)})
        w->setEnabled(idle);
    gbBody->setEnabled(idle && cbBody->isChecked()); // the view matters only to a body that is printed
    rangeControls->setEnabled(idle && rbtMPRange->isChecked() && rangeControls->hasMps());
    for (QPushButton *b : {btnPreview, btnPrint, btnSavePdf})
        b->setEnabled(ready);
    btnStop->setEnabled(!idle);
    btnClose->setEnabled(idle);
}

report::ReportRequest TFormReport::request() const
{
    report::ReportRequest r;
    if (source_) {
        const ReportSource src = source_();
        r.recording = src.recordFile;
        r.header = src.header;
        r.charMode = src.charMode;
        r.controlMode = src.controlMode;
        r.secondaryMode = src.secondaryMode;
        r.timeMode = src.timeMode;
        r.namingSet = src.namingSet;
    }
    if (!rangeControls->hasMps()) {
        r.first = 1; // after last: nothing to print
        r.last = 0;
    } else if (rbtMPAll->isChecked()) {
        r.first = rangeControls->limits().first();
        r.last = rangeControls->limits().last();
    } else {
        r.first = rangeControls->from();
        r.last = rangeControls->to();
    }
    r.body = rbDump->isChecked()       ? report::ReportBody::Dump
             : rbDataOnly->isChecked() ? report::ReportBody::DataOnly
                                       : report::ReportBody::Vertical;
    r.withHeader = cbHeader->isChecked();
    r.withDetails = cbDetails->isChecked();
    r.withBody = cbBody->isChecked();
    r.withSummary = cbSummary->isChecked();
    r.withFooter = cbFooter->isChecked();
    r.lang = GlobalLang();
    r.paper = rbLetter->isChecked() ? report::PaperSize::Letter : report::PaperSize::A4;
    r.landscape = rbLandscape->isChecked();
    return r;
}

bool TFormReport::readyToStart()
{
    if (isRunning())
        return false;
    // A number still being typed counts as if the field had been left.
    rangeControls->edtMPStartExit();
    rangeControls->edtMPStopExit();
    refreshLimits(); // the recording may have grown since the window opened
    if (!rangeControls->hasMps() || !source_) {
        fail(S(ReportFormMsg::NoRecording));
        return false;
    }
    return true;
}

void TFormReport::btnPreviewClick()
{
    if (!readyToStart())
        return;
    if (preview_ == nullptr)
        preview_ = new ReportPreview(this);
    preview_->showReport(request(), previewPages_);
}

void TFormReport::btnPrintClick()
{
    if (!readyToStart())
        return;
    const report::ReportRequest r = request();
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    // The print dialog opens on the paper and orientation chosen here.
    printer->setPageSize(QPageSize(r.paper == report::PaperSize::Letter ? QPageSize::Letter : QPageSize::A4));
    printer->setPageOrientation(r.landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    printer->setDocName(QFileInfo(QString::fromStdString(r.recording.string())).fileName());
    const bool chosen = choosePrinter_ ? choosePrinter_(*printer) : AskWithPrintDialog(this, *printer);
    if (!chosen)
        return;
    const QString where =
        printer->outputFormat() == QPrinter::PdfFormat ? printer->outputFileName() : printer->printerName();
    printer_ = std::move(printer);
    QPrinter *device = printer_.get();
    start(Target::Printer, where, r, [device, r](const report::ReportProgressFn &progress) {
        return report::PrintReport(*device, r, progress);
    });
}

void TFormReport::btnSavePdfClick()
{
    if (!readyToStart())
        return;
    const QString path = chooseTarget();
    if (path.isEmpty() || !confirmTarget(path))
        return;
    lastFolder_ = QFileInfo(path).absolutePath();
    const report::ReportRequest r = request();
    const std::filesystem::path out = path.toStdString();
    start(Target::Pdf, path, r, [out, r](const report::ReportProgressFn &progress) {
        return report::WriteReportPdf(out, r, progress);
    });
}

void TFormReport::btnStopClick() { stop_ = true; }

QString TFormReport::chooseTarget()
{
    ReportFileQuestion q;
    q.title = S(ReportFormMsg::SaveTitle);
    q.filter = S(ReportFormMsg::PdfFilter);
    const QString folder = lastFolder_.isEmpty() ? QDir::homePath() : lastFolder_;
    q.startPath = QDir(folder).filePath(S(ReportFormMsg::DefaultName) + ".pdf");
    return chooseFile_ ? chooseFile_(q) : AskWithFileDialog(this, q);
}

bool TFormReport::confirmTarget(const QString &path)
{
    const std::string recording = source_ ? source_().recordFile : std::string();
    if (report::ExamineReportTarget(path.toStdString(), recording) != report::ReportTarget::Pdf)
        return true; // nothing to lose, or something the report library refuses itself
    const QString question = S(ReportFormMsg::Replace).arg(path);
    return prompter_.ShowMessage(Str(ReportFormMsg::FileTitle), question.toStdString(), Buttons::YesNoDefaultNo,
                                 Icon::Warning) == MsgResult::Yes;
}

void TFormReport::start(Target target, const QString &where, const report::ReportRequest &request, Job job)
{
    stop_ = false;
    done_ = 0;
    total_ = request.last >= request.first ? request.last - request.first + 1 : 0;
    ProgressBar1->setValue(0);
    setState(ReportFormMsg::Running, {Num(request.first), Num(request.last)});
    qCInfo(lcApp) << "report of MPs" << request.first << "to" << request.last << "to" << where;
    worker_ = std::thread([this, target, where, job = std::move(job)] {
        const auto progress = [this](const report::ReportProgress &p) {
            done_ = p.done;
            total_ = p.total;
            return !stop_.load();
        };
        const Expected<report::ReportOutcome> result = job(progress);
        QMetaObject::invokeMethod(
            this, [this, target, where, result] { finish(target, where, result); }, Qt::QueuedConnection);
    });
    progressTimer_->start();
    SetupActiveElements();
}

void TFormReport::showProgress()
{
    const std::uint64_t total = total_;
    const int percent = total == 0 ? 0 : static_cast<int>(done_.load() * 100 / total);
    if (ProgressBar1->value() != percent)
        ProgressBar1->setValue(percent);
}

void TFormReport::finish(Target target, const QString &where, const Expected<report::ReportOutcome> &result)
{
    if (worker_.joinable())
        worker_.join();
    progressTimer_->stop();
    printer_.reset(); // a print job is handed to the system when its printer goes
    SetupActiveElements();
    if (!result.ok()) {
        fail(ResultText(result.result));
    } else if (result.value.stopped) {
        // A stopped PDF is dropped whole; a printer has been sent the pages painted so far.
        setState(target == Target::Pdf ? ReportFormMsg::PdfStopped : ReportFormMsg::Stopped,
                 {QString::number(result.value.pages)});
    } else {
        ProgressBar1->setValue(100);
        setState(target == Target::Pdf ? ReportFormMsg::Saved : ReportFormMsg::Printed,
                 {QString::number(result.value.pages), where});
    }
    emit jobFinished();
}

void TFormReport::fail(const QString &detail)
{
    setState(ReportFormMsg::Failed, {detail});
    prompter_.ShowMessage(Str(ReportFormMsg::FileTitle), lblReportState->text().toStdString(), Buttons::Ok,
                          Icon::Error);
}

void TFormReport::hideEvent(QHideEvent *event)
{
    if (preview_ != nullptr)
        preview_->close();
    ToolJobWindow::hideEvent(event);
}

} // namespace kestrel
