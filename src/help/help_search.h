#pragma once
// Full-text search over the manual's pages of one language.

#include <QString>
#include <vector>

namespace kestrel::help {

struct SearchHit {
    QString id;
    QString title;
    QString snippet; // the text around the first match, on one line
    int score = 0;
};

// Pages that hold every word of the query (case ignored, a word may be part of a
// longer one: "trigger" finds "triggers"), best first: a word in the title counts
// more than one in the text. An empty query finds nothing.
[[nodiscard]] std::vector<SearchHit> SearchPages(const QString &query, int lang);

// The page's text as it reads, without the markdown marks (for searching and snippets).
[[nodiscard]] QString PlainText(const QString &markdown);

} // namespace kestrel::help
