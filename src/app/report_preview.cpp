#include "app/report_preview.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QLabel>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QProgressBar>
#include <QToolButton>
#include <QVBoxLayout>

#include "app/report_form.h"
#include "base/string_table.h"
#include "report/report_printer.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

// The event loop runs this often while pages are painted: often enough for Stop and
// Close to answer at once, rarely enough to cost the painting nothing.
constexpr qint64 kPumpMs = 50;

} // namespace

ReportPreview::ReportPreview(QWidget *parent)
    : QDialog(parent, Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint | Qt::WindowMaximizeButtonHint)
{
    setObjectName("ReportPreview");
    setModal(false);
    pvPages = new QPrintPreviewWidget(this);
    pvPages->setObjectName("pvPages");
    pvPages->setViewMode(QPrintPreviewWidget::SinglePageView);
    pvPages->setZoomMode(QPrintPreviewWidget::FitInView);
    connect(pvPages, &QPrintPreviewWidget::paintRequested, this, &ReportPreview::paintPages);
    connect(pvPages, &QPrintPreviewWidget::previewChanged, this, &ReportPreview::updatePageLabel);

    auto tool = [this](const char *name, auto slot) {
        auto *b = new QToolButton(this);
        b->setObjectName(name);
        b->setToolButtonStyle(Qt::ToolButtonTextOnly);
        connect(b, &QToolButton::clicked, this, slot);
        return b;
    };
    btnPrevPage = tool("btnPrevPage", [this] {
        pvPages->setCurrentPage(pvPages->currentPage() - 1);
        updatePageLabel();
    });
    btnNextPage = tool("btnNextPage", [this] {
        pvPages->setCurrentPage(pvPages->currentPage() + 1);
        updatePageLabel();
    });
    btnZoomIn = tool("btnZoomIn", [this] { pvPages->zoomIn(); });
    btnZoomOut = tool("btnZoomOut", [this] { pvPages->zoomOut(); });
    btnWholePage = tool("btnWholePage", [this] { pvPages->fitInView(); });
    btnStop = tool("btnStop", [this] { stop_ = true; });
    btnClose = tool("btnClose", [this] { close(); });
    lblPage = new QLabel(this);
    lblPage->setObjectName("lblPage");
    lblNote = new QLabel(this);
    lblNote->setObjectName("lblNote");
    lblNote->setWordWrap(true);
    lblNote->setTextInteractionFlags(Qt::TextSelectableByMouse);
    ProgressBar1 = new QProgressBar(this);
    ProgressBar1->setObjectName("ProgressBar1");
    ProgressBar1->setRange(0, 100);

    auto *bar = new QHBoxLayout;
    bar->addWidget(btnPrevPage);
    bar->addWidget(lblPage);
    bar->addWidget(btnNextPage);
    bar->addSpacing(12);
    bar->addWidget(btnZoomOut);
    bar->addWidget(btnZoomIn);
    bar->addWidget(btnWholePage);
    bar->addStretch(1);
    bar->addWidget(ProgressBar1);
    bar->addWidget(btnStop);
    bar->addWidget(btnClose);
    auto *all = new QVBoxLayout(this);
    all->addLayout(bar);
    all->addWidget(lblNote);
    all->addWidget(pvPages, 1);
    resize(760, 860);
    InitialLoads();
    SetupActiveElements();
}

ReportPreview::~ReportPreview() { stop_ = true; }

void ReportPreview::InitialLoads()
{
    using namespace ReportFormMsg;
    setWindowTitle(S(PreviewTitle));
    btnPrevPage->setText(S(PreviousPage));
    btnNextPage->setText(S(NextPage));
    btnZoomIn->setText(S(ZoomIn));
    btnZoomOut->setText(S(ZoomOut));
    btnWholePage->setText(S(WholePage));
    btnStop->setText(S(StopButton));
    btnStop->setToolTip(S(StopHint));
    btnClose->setText(S(CloseButton));
    updatePageLabel();
    showNote();
}

void ReportPreview::showReport(const report::ReportRequest &request, int maxPages)
{
    if (rendering_) {
        raise(); // the pages being painted come first; the next click shows the new choice
        return;
    }
    request_ = request;
    maxPages_ = maxPages;
    closeAfterRendering_ = false;
    // The preview widget asks for pages by itself when it is first shown.
    const int before = paints_;
    show();
    raise();
    activateWindow();
    if (paints_ == before)
        pvPages->updatePreview();
}

int ReportPreview::pageCount() const { return pvPages->pageCount(); }

QString ReportPreview::noteText() const { return lblNote->text(); }

void ReportPreview::paintPages(QPrinter *printer)
{
    if (rendering_)
        return; // asked again while the event loop runs between pages
    rendering_ = true;
    ++paints_;
    // The pages on show are gone as soon as the printer starts again, while the preview
    // would still draw them: it stays hidden until it holds the new ones.
    pvPages->hide();
    stop_ = false;
    error_.clear();
    outcome_ = {};
    ProgressBar1->setValue(0);
    SetupActiveElements();
    showNote();

    QElapsedTimer sincePump;
    sincePump.start();
    const auto progress = [this, &sincePump](const report::ReportProgress &p) {
        if (sincePump.elapsed() >= kPumpMs) {
            // The part of the range laid out, or of the pages the preview holds, whichever is further.
            if (p.total > 0)
                ProgressBar1->setValue(static_cast<int>(p.done * 100 / p.total));
            QCoreApplication::processEvents();
            sincePump.restart();
        }
        return !stop_.load();
    };
    const Expected<report::ReportOutcome> r = report::PrintReport(*printer, request_, progress, maxPages_);
    if (r.ok())
        outcome_ = r.value;
    else
        error_ = S(ReportFormMsg::Failed).arg(QString::fromStdString(
            Str(r.result.code) + (r.result.detail.empty() ? "" : "\n" + r.result.detail)));
    rendering_ = false;
    // The preview takes the new pages after this returns; it shows them from the next
    // turn of the event loop on.
    QMetaObject::invokeMethod(pvPages, &QWidget::show, Qt::QueuedConnection);
    SetupActiveElements();
    showNote();
    emit rendered();
    if (closeAfterRendering_)
        QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
}

void ReportPreview::showNote()
{
    using namespace ReportFormMsg;
    QString text;
    if (rendering_)
        text = S(PreviewRunning);
    else if (!error_.isEmpty())
        text = error_;
    else if (outcome_.stopped)
        text = S(Stopped).arg(outcome_.pages);
    else if (outcome_.truncated)
        text = S(PreviewTruncated).arg(outcome_.pages);
    lblNote->setText(text);
    lblNote->setVisible(!text.isEmpty());
}

void ReportPreview::updatePageLabel()
{
    lblPage->setText(S(ReportFormMsg::PageOf).arg(pvPages->currentPage()).arg(pvPages->pageCount()));
    SetupActiveElements();
}

void ReportPreview::SetupActiveElements()
{
    // While pages are painted the preview holds the old pages: nothing there may ask for new ones.
    const int page = pvPages->currentPage();
    btnPrevPage->setEnabled(!rendering_ && page > 1);
    btnNextPage->setEnabled(!rendering_ && page < pvPages->pageCount());
    for (QWidget *w : {static_cast<QWidget *>(btnZoomIn), static_cast<QWidget *>(btnZoomOut),
                       static_cast<QWidget *>(btnWholePage), static_cast<QWidget *>(pvPages)})
        w->setEnabled(!rendering_);
    ProgressBar1->setVisible(rendering_);
    btnStop->setVisible(rendering_);
}

void ReportPreview::closeEvent(QCloseEvent *event)
{
    if (rendering_) {
        // Painting runs inside the preview's own call: it ends first, then the window closes.
        stop_ = true;
        closeAfterRendering_ = true;
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void ReportPreview::reject()
{
    if (rendering_) {
        stop_ = true;
        return;
    }
    QDialog::reject();
}

} // namespace kestrel
