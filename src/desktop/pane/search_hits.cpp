#include "desktop/pane/search_hits.h"

#include "partlibrary/library/sort_text.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <vector>

namespace partkeep {

namespace {

// A folded text, and where each of its units comes from.
struct FoldedText {
    QString text;
    std::vector<SearchHit> places;
};

FoldedText FoldWithPlaces(const QString& text)
{
    FoldedText folded;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype start = 0; start < text.size();) {
        const qsizetype next = finder.toNextBoundary();
        const qsizetype end = next > start ? next : text.size();
        folded.text += FoldText(text.sliced(start, end - start));
        folded.places.resize(static_cast<std::size_t>(folded.text.size()), SearchHit{start, end - start});
        start = end;
    }
    return folded;
}

} // namespace

QList<SearchHit> FindHits(const QString& text, const QStringList& words)
{
    if (words.isEmpty()) {
        return {};
    }
    const FoldedText folded = FoldWithPlaces(text);
    std::vector<bool> marked(static_cast<std::size_t>(text.size()), false);
    for (const QString& word : words) {
        for (qsizetype at = folded.text.indexOf(word); at >= 0; at = folded.text.indexOf(word, at + 1)) {
            for (qsizetype unit = at; unit < at + word.size(); ++unit) {
                const SearchHit& place = folded.places[static_cast<std::size_t>(unit)];
                std::fill_n(marked.begin() + place.start, place.length, true);
            }
        }
    }
    QList<SearchHit> hits;
    for (auto from = std::find(marked.begin(), marked.end(), true); from != marked.end();) {
        const auto to = std::find(from, marked.end(), false);
        hits += {from - marked.begin(), to - from};
        from = std::find(to, marked.end(), true);
    }
    return hits;
}

} // namespace partkeep
