// Text as a library orders and searches it: folded so that letter case and the width of characters do not
// count, with keys that compare byte by byte in natural order, and with the pairs of characters that the
// search index holds.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace partkeep {

// Compatibility form (full-width and half-width alike), then case folded. The same in every locale.
[[nodiscard]] QString FoldText(const QString& text);

// A key of folded text that sorts by memcmp in natural order: a run of digits counts as a number, so that
// "P2" comes before "P10". At most max_sort_key_bytes; longer texts tie.
inline constexpr qsizetype max_sort_key_bytes = 128;
[[nodiscard]] QByteArray NaturalKey(const QString& folded);

// The words of a search: folded, split at blanks. A part is found when each word lies somewhere in its text.
[[nodiscard]] QStringList SearchWords(const QString& typed);

// What the search index stores for folded text: each pair of neighbouring characters of each word, and each
// word's last character with an end mark, as words of their own. Pairs rather than words, so that any piece
// of a name is found, in scripts without blanks too; two characters are all that many an operator types.
[[nodiscard]] QString SearchPairs(const QString& folded);

// The index's query for the parts that hold all pairs of all words: no part that matches is missed, but a
// match must still be looked at, since pairs do not say where they stand. Words must not be empty.
[[nodiscard]] QString PairQuery(const QStringList& words);

} // namespace partkeep
