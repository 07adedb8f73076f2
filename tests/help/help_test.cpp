// The manual's pages as a whole (both languages, links) and the search over them.

#include <gtest/gtest.h>

#include <QDir>
#include <QRegularExpression>
#include <QSet>

#include "base/string_table.h"
#include "help/help_catalogue.h"
#include "help/help_search.h"

using namespace kestrel;
using namespace kestrel::help;

namespace {

QSet<QString> FilesOf(int lang)
{
    const QStringList files = QDir(":/help/" + LanguageFolder(lang)).entryList(QDir::Files);
    return {files.begin(), files.end()};
}

QStringList Ids(const std::vector<SearchHit> &hits)
{
    QStringList ids;
    for (const SearchHit &h : hits)
        ids << h.id;
    return ids;
}

} // namespace

TEST(HelpPages, EveryPageIsThereInBothLanguagesAndEveryLinkLeadsToAPage)
{
    QSet<QString> catalogue;
    for (const HelpPage &p : HelpPages()) {
        catalogue.insert(QString::fromUtf8(p.id.data(), qsizetype(p.id.size())) + ".md");
        EXPECT_TRUE(p.parent.empty() || IsHelpPage(p.parent)) << p.id;
    }
    EXPECT_EQ(FilesOf(kLangGerman), FilesOf(kLangEnglish));
    EXPECT_EQ(FilesOf(kLangEnglish), catalogue);

    static const QRegularExpression link(QStringLiteral(R"(\]\(([^)\s]*)\))"));
    for (const int lang : {kLangGerman, kLangEnglish})
        for (const HelpPage &p : HelpPages()) {
            const Expected<QString> text = PageText(p.id, lang);
            ASSERT_TRUE(text.ok()) << text.result.detail;
            // The browser shows a bar escaped for a table cell as it stands, backslash and all.
            EXPECT_FALSE(text.value.contains("\\|")) << p.id;
            // A title of its own: the contents list it, and the two languages differ in it.
            EXPECT_NE(PageTitle(p.id, lang), QString::fromUtf8(p.id.data(), qsizetype(p.id.size()))) << p.id;
            for (auto m = link.globalMatch(text.value); m.hasNext();) {
                const QString target = m.next().captured(1);
                if (target.startsWith("https://"))
                    continue;
                // The browser follows a page name; anchors inside a page it cannot reach.
                EXPECT_TRUE(target.endsWith(".md") && IsHelpPage(PageIdOfPath(target).toStdString()))
                    << LanguageFolder(lang).toStdString() << "/" << p.id << ": " << target.toStdString();
            }
        }
    EXPECT_NE(PageTitle("wireshark", kLangGerman), PageTitle("goto", kLangGerman));

    const Expected<QString> missing = PageText("no-such-page", kLangEnglish);
    EXPECT_FALSE(missing.ok());
    EXPECT_NE(missing.result.detail.find("en/no-such-page.md"), std::string::npos);
}

TEST(HelpSearch, FindsPagesHoldingEveryWordTitleFirstWithTheWordInTheSnippet)
{
    // A word of a page's title puts that page first, whatever the case typed.
    const std::vector<SearchHit> wireshark = SearchPages("WIRESHARK", kLangEnglish);
    ASSERT_GE(wireshark.size(), 2u);
    EXPECT_EQ(wireshark.front().id, "wireshark");
    EXPECT_GT(wireshark[0].score, wireshark[1].score);
    EXPECT_TRUE(wireshark.front().snippet.contains("Wireshark")) << wireshark.front().snippet.toStdString();
    EXPECT_FALSE(wireshark.front().snippet.contains('`')); // text as it reads, no markdown marks

    // Every word must be on the page: each alone is found on more pages than both together.
    const QStringList both = Ids(SearchPages("extcap  placeholder", kLangEnglish));
    EXPECT_TRUE(both.isEmpty()) << both.join(",").toStdString();
    const QStringList pair = Ids(SearchPages("scenario modem", kLangEnglish));
    EXPECT_TRUE(pair.contains("scenario-format"));
    EXPECT_LT(pair.size(), Ids(SearchPages("scenario", kLangEnglish)).size());

    // One language at a time; umlauts match in either case.
    EXPECT_EQ(Ids(SearchPages("RÜCKGABEWERTE", kLangGerman)), QStringList{"command-line"});
    EXPECT_TRUE(SearchPages("Rückgabewerte", kLangEnglish).empty());
    EXPECT_TRUE(SearchPages("   ", kLangEnglish).empty());
}
