#pragma once
// The report's print preview: the pages of a report as they will print, with
// page turning and zoom. It paints at most a given number of pages (a long
// report would otherwise be held in memory page by page) and then says above
// the pages that it shows only the first ones. Painting runs in the preview's
// request for pages; the event loop runs between pages, so the window can
// be stopped (btnStop) and closed meanwhile.

#include <QDialog>
#include <atomic>

#include "report/report_request.h"

class QLabel;
class QPrinter;
class QPrintPreviewWidget;
class QProgressBar;
class QToolButton;

namespace kestrel {

class ReportPreview final : public QDialog {
    Q_OBJECT
public:
    explicit ReportPreview(QWidget *parent = nullptr);
    ~ReportPreview() override;

    // Paints the first `maxPages` pages of the report (0: all) and shows the window.
    void showReport(const report::ReportRequest &request, int maxPages);

    [[nodiscard]] int pageCount() const;
    [[nodiscard]] bool isRendering() const { return rendering_; }
    [[nodiscard]] QString noteText() const;
    [[nodiscard]] const report::ReportOutcome &outcome() const { return outcome_; }

    void InitialLoads(); // texts in the current language

signals:
    void rendered(); // painting ended (done, truncated, stopped or failed)

protected:
    void closeEvent(QCloseEvent *event) override;
    void reject() override; // Escape while painting stops first

private:
    void paintPages(QPrinter *printer);
    void showNote();
    void updatePageLabel();
    void SetupActiveElements();

    report::ReportRequest request_;
    int maxPages_ = 0;
    bool rendering_ = false;
    int paints_ = 0; // requests for pages so far
    bool closeAfterRendering_ = false;
    std::atomic<bool> stop_{false};
    report::ReportOutcome outcome_;
    QString error_; // why painting failed; empty when it did not

    QPrintPreviewWidget *pvPages = nullptr;
    QLabel *lblNote = nullptr;
    QProgressBar *ProgressBar1 = nullptr;
    QToolButton *btnPrevPage = nullptr;
    QToolButton *btnNextPage = nullptr;
    QLabel *lblPage = nullptr;
    QToolButton *btnZoomIn = nullptr;
    QToolButton *btnZoomOut = nullptr;
    QToolButton *btnWholePage = nullptr;
    QToolButton *btnStop = nullptr;
    QToolButton *btnClose = nullptr;
};

} // namespace kestrel
