#pragma once
// The manual: contents, search and the page, with back and forward. One window for
// the program (see help_request.h); it follows the program's language.

#include <QWidget>

class QLineEdit;
class QListWidget;
class QTabWidget;
class QTextBrowser;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;
class QUrl;

namespace kestrel {

class THelpWindow final : public QWidget {
    Q_OBJECT
public:
    explicit THelpWindow(QWidget *parent = nullptr);

    // Shows the page in the program's language and brings the window to the front.
    void showPage(const QString &pageId);
    // Texts in the program's language; the page shown reopens in it.
    void InitialLoads();

    [[nodiscard]] QString currentPage() const;
    [[nodiscard]] int currentLanguage() const { return pageLang_; }

private:
    void openPage(const QString &pageId);
    void fillContents();
    void sourceChanged(const QUrl &url);
    void searchChanged();
    void bringToFront();

    QToolButton *btnBack;
    QToolButton *btnForward;
    QTabWidget *pcNavigation;
    QTreeWidget *tvContents;
    QLineEdit *edSearch;
    QListWidget *lbSearchResults;
    QTextBrowser *txtPage;
    int pageLang_ = -1;
};

} // namespace kestrel
