#include "help/help_search.h"

#include <QRegularExpression>
#include <algorithm>

#include "help/help_catalogue.h"

namespace kestrel::help {
namespace {

constexpr int kTitleWeight = 10;
constexpr qsizetype kSnippetBefore = 40;
constexpr qsizetype kSnippetAfter = 100;

int CountOf(const QString &haystack, const QString &word)
{
    int n = 0;
    for (qsizetype at = haystack.indexOf(word); at >= 0; at = haystack.indexOf(word, at + word.size()))
        ++n;
    return n;
}

// A line of text around `at`, cut at blanks, with "…" where it was cut.
QString SnippetAround(const QString &text, qsizetype at, qsizetype length)
{
    qsizetype from = std::max<qsizetype>(0, at - kSnippetBefore);
    qsizetype to = std::min(text.size(), at + length + kSnippetAfter);
    if (from > 0) {
        const qsizetype blank = text.indexOf(u' ', from);
        if (blank >= 0 && blank < at)
            from = blank + 1;
    }
    if (to < text.size()) {
        const qsizetype blank = text.lastIndexOf(u' ', to);
        if (blank > at + length)
            to = blank;
    }
    QString s = text.mid(from, to - from).trimmed();
    if (from > 0)
        s.prepend(QChar(0x2026));
    if (to < text.size())
        s.append(QChar(0x2026));
    return s;
}

} // namespace

QString PlainText(const QString &markdown)
{
    QString text = markdown;
    static const QRegularExpression link(QStringLiteral(R"(!?\[([^\]]*)\]\([^)]*\))"));
    text.replace(link, QStringLiteral("\\1"));
    // Emphasis and code marks go without a trace ("**Title**:" reads "Title:"); headings,
    // table bars and rules become blanks.
    static const QRegularExpression emphasis(QStringLiteral("[`*]"));
    text.remove(emphasis);
    static const QRegularExpression marks(QStringLiteral(R"([#|>]|^-{3,}|\|?-{3,}\|)"), QRegularExpression::MultilineOption);
    text.replace(marks, QStringLiteral(" "));
    return text.simplified();
}

std::vector<SearchHit> SearchPages(const QString &query, int lang)
{
    const QStringList words = query.toLower().split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    std::vector<SearchHit> hits;
    if (words.isEmpty())
        return hits;
    for (const HelpPage &page : HelpPages()) {
        const Expected<QString> markdown = PageText(page.id, lang);
        if (!markdown.ok())
            continue;
        const QString title = PageTitle(page.id, lang);
        const QString text = PlainText(markdown.value);
        const QString lowerText = text.toLower();
        const QString lowerTitle = title.toLower();
        int score = 0;
        bool all = true;
        for (const QString &w : words) {
            const int inText = CountOf(lowerText, w);
            if (inText == 0) {
                all = false;
                break;
            }
            score += inText + kTitleWeight * CountOf(lowerTitle, w);
        }
        if (!all)
            continue;
        // The snippet shows the first place of the word that is rarest on the page.
        const QString &rarest = *std::min_element(words.begin(), words.end(), [&](const QString &a, const QString &b) {
            return CountOf(lowerText, a) < CountOf(lowerText, b);
        });
        const qsizetype at = lowerText.indexOf(rarest);
        hits.push_back({QString::fromUtf8(page.id.data(), qsizetype(page.id.size())), title,
                        SnippetAround(text, at, rarest.size()), score});
    }
    // Equal scores keep the order of the contents.
    std::stable_sort(hits.begin(), hits.end(), [](const SearchHit &a, const SearchHit &b) { return a.score > b.score; });
    return hits;
}

} // namespace kestrel::help
