// Where the words of a search stand in a text as it is shown, so that a row can tell why it was found.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace partkeep {

struct SearchHit {
    qsizetype start;
    qsizetype length;

    friend bool operator==(const SearchHit&, const SearchHit&) = default;
};

// By the rules of the search: `words` as SearchWords gives them. Hits come in order and do not touch each other;
// characters that are shown as one are marked as one.
[[nodiscard]] QList<SearchHit> FindHits(const QString& text, const QStringList& words);

} // namespace partkeep
