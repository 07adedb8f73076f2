#include "app/help_window.h"

#include <QApplication>
#include <algorithm>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QScreen>
#include <QSplitter>
#include <QTabWidget>
#include <QTextBrowser>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "base/string_table.h"
#include "help/help_catalogue.h"
#include "help/help_search.h"

namespace kestrel {
namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }
QString IdText(std::string_view id) { return QString::fromUtf8(id.data(), qsizetype(id.size())); }

constexpr int kPageMissing = 9265, kCaption = 9266, kContents = 9267, kSearch = 9268, kBack = 9269, kForward = 9270,
              kNoHits = 9271, kSearchHint = 9272;
constexpr int kPageRole = Qt::UserRole;

QToolButton *NavButton(QWidget *parent, const char *name, QStyle::StandardPixmap icon)
{
    auto *b = new QToolButton(parent);
    b->setObjectName(name);
    b->setIcon(parent->style()->standardIcon(icon));
    b->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    b->setEnabled(false);
    return b;
}

} // namespace

THelpWindow::THelpWindow(QWidget *parent) : QWidget(parent, Qt::Window)
{
    setObjectName("THelpWindow");
    setAttribute(Qt::WA_QuitOnClose, false); // the manual left open never keeps the program alive
    btnBack = NavButton(this, "btnBack", QStyle::SP_ArrowBack);
    btnForward = NavButton(this, "btnForward", QStyle::SP_ArrowForward);

    pcNavigation = new QTabWidget(this);
    pcNavigation->setObjectName("pcNavigation");
    tvContents = new QTreeWidget(pcNavigation);
    tvContents->setObjectName("tvContents");
    tvContents->setHeaderHidden(true);
    pcNavigation->addTab(tvContents, QString());
    auto *searchPage = new QWidget(pcNavigation);
    searchPage->setObjectName("tsSearch");
    edSearch = new QLineEdit(searchPage);
    edSearch->setObjectName("edSearch");
    edSearch->setClearButtonEnabled(true);
    lbSearchResults = new QListWidget(searchPage);
    lbSearchResults->setObjectName("lbSearchResults");
    lbSearchResults->setWordWrap(true);
    lbSearchResults->setTextElideMode(Qt::ElideNone);
    auto *searchBox = new QVBoxLayout(searchPage);
    searchBox->addWidget(edSearch);
    searchBox->addWidget(lbSearchResults, 1);
    pcNavigation->addTab(searchPage, QString());

    txtPage = new QTextBrowser(this);
    txtPage->setObjectName("txtPage");
    txtPage->setOpenExternalLinks(true);
    txtPage->setSearchPaths({QStringLiteral(":/help")});

    auto *split = new QSplitter(Qt::Horizontal, this);
    split->setObjectName("splHelp");
    split->addWidget(pcNavigation);
    split->addWidget(txtPage);
    split->setStretchFactor(1, 1);
    split->setChildrenCollapsible(false);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(btnBack);
    buttons->addWidget(btnForward);
    buttons->addStretch(1);
    auto *box = new QVBoxLayout(this);
    box->addLayout(buttons);
    box->addWidget(split, 1);

    connect(btnBack, &QToolButton::clicked, txtPage, &QTextBrowser::backward);
    connect(btnForward, &QToolButton::clicked, txtPage, &QTextBrowser::forward);
    connect(txtPage, &QTextBrowser::backwardAvailable, btnBack, &QWidget::setEnabled);
    connect(txtPage, &QTextBrowser::forwardAvailable, btnForward, &QWidget::setEnabled);
    connect(txtPage, &QTextBrowser::sourceChanged, this, &THelpWindow::sourceChanged);
    connect(tvContents, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        if (item != nullptr && item->data(0, kPageRole).toString() != currentPage())
            openPage(item->data(0, kPageRole).toString());
    });
    connect(edSearch, &QLineEdit::textChanged, this, &THelpWindow::searchChanged);
    connect(lbSearchResults, &QListWidget::itemActivated, this, [this](QListWidgetItem *item) {
        const QString id = item->data(kPageRole).toString();
        if (!id.isEmpty())
            openPage(id);
    });
    connect(lbSearchResults, &QListWidget::itemClicked, lbSearchResults, &QListWidget::itemActivated);

    // A readable page beside the contents, on any screen from 1024 x 768 up.
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    resize(std::min(980, screen.width() * 9 / 10), std::min(720, screen.height() * 9 / 10));
    InitialLoads();
    // The contents as wide as their longest title, up to a third of the window.
    tvContents->resizeColumnToContents(0);
    const int contents = std::min(width() / 3, tvContents->columnWidth(0) + 2 * tvContents->indentation());
    split->setSizes({std::max(width() * 3 / 10, contents), width() - std::max(width() * 3 / 10, contents)});
}

void THelpWindow::InitialLoads()
{
    setWindowTitle(S(kCaption));
    btnBack->setText(S(kBack));
    btnForward->setText(S(kForward));
    pcNavigation->setTabText(0, S(kContents));
    pcNavigation->setTabText(1, S(kSearch));
    edSearch->setPlaceholderText(S(kSearchHint));
    fillContents();
    if (pageLang_ != -1 && pageLang_ != GlobalLang()) {
        // The same page in the other language; the history of the old one would lead back into it.
        openPage(currentPage());
        txtPage->clearHistory();
    }
    searchChanged();
}

void THelpWindow::fillContents()
{
    const QSignalBlocker quiet(tvContents);
    tvContents->clear();
    QHash<QString, QTreeWidgetItem *> items;
    for (const help::HelpPage &page : help::HelpPages()) {
        QTreeWidgetItem *parent = items.value(IdText(page.parent));
        auto *item = parent != nullptr ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(tvContents);
        item->setText(0, help::PageTitle(page.id, GlobalLang()));
        item->setData(0, kPageRole, IdText(page.id));
        items.insert(IdText(page.id), item);
    }
    tvContents->expandAll();
    sourceChanged(txtPage->source());
}

void THelpWindow::showPage(const QString &pageId)
{
    openPage(pageId);
    bringToFront();
}

void THelpWindow::openPage(const QString &pageId)
{
    const QString id = help::IsHelpPage(pageId.toStdString()) ? pageId : IdText(help::kMainPage);
    pageLang_ = GlobalLang();
    const Expected<QString> text = help::PageText(id.toStdString(), pageLang_);
    if (!text.ok()) {
        txtPage->setMarkdown(S(kPageMissing) + "\n\n`" + QString::fromStdString(text.result.detail) + "`");
        return;
    }
    txtPage->setSource(QUrl(QStringLiteral("qrc") + help::PagePath(id.toStdString(), pageLang_)),
                       QTextDocument::MarkdownResource);
}

QString THelpWindow::currentPage() const { return help::PageIdOfPath(txtPage->source().path()); }

void THelpWindow::sourceChanged(const QUrl &url)
{
    // The contents mark the page shown, however it was reached (a link, back, a search hit).
    const QString id = help::PageIdOfPath(url.path());
    const QSignalBlocker quiet(tvContents);
    for (QTreeWidgetItemIterator it(tvContents); *it != nullptr; ++it)
        if ((*it)->data(0, kPageRole).toString() == id)
            tvContents->setCurrentItem(*it);
}

void THelpWindow::searchChanged()
{
    lbSearchResults->clear();
    const QString query = edSearch->text();
    if (query.trimmed().isEmpty())
        return;
    const std::vector<help::SearchHit> hits = help::SearchPages(query, GlobalLang());
    for (const help::SearchHit &hit : hits) {
        // The title in bold over its snippet; either one opens the page.
        auto *title = new QListWidgetItem(hit.title, lbSearchResults);
        QFont bold = title->font();
        bold.setBold(true);
        title->setFont(bold);
        auto *snippet = new QListWidgetItem(hit.snippet, lbSearchResults);
        for (QListWidgetItem *item : {title, snippet})
            item->setData(kPageRole, hit.id);
    }
    if (hits.empty()) {
        auto *none = new QListWidgetItem(S(kNoHits), lbSearchResults);
        none->setFlags(Qt::NoItemFlags);
    }
}

void THelpWindow::bringToFront()
{
    // Asked from a modal dialog, the manual must be usable on top of it: a window shown
    // beside a modal dialog would be blocked by it.
    QWidget *modal = QApplication::activeModalWidget();
    const Qt::WindowModality wanted = modal != nullptr && modal != this ? Qt::ApplicationModal : Qt::NonModal;
    if (windowModality() != wanted) {
        hide();
        setWindowModality(wanted);
    }
    show();
    raise();
    activateWindow();
}

} // namespace kestrel
