// Text as a library orders and searches it: folded so that letter case, accents, width and kind of kana do not count,
// with keys that compare byte by byte in natural order, and with the pairs of characters that the search index holds.
#pragma once

#include "partlibrary/library/part_list.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace partkeep {

// Compatibility form (full-width and half-width alike), without accents, hiragana as katakana, then case folded. The
// same in every locale.
[[nodiscard]] QString FoldText(const QString& text);

// A key that sorts by memcmp in natural order (the library ICU, root locale): case does not count, digits count as
// numbers, so that "P2" comes before "P10". At most max_sort_key_bytes; longer texts tie.
inline constexpr qsizetype max_sort_key_bytes = 128;
[[nodiscard]] QByteArray SortKey(const QString& text);

// What of a part is searched: a line end keeps the words of two attributes apart.
[[nodiscard]] QString SearchText(const PartRow& part);

// Names the rules by which keys and folded texts are made, locale and version included. A library has all its keys by
// the same: who reads by other rules believes none of them, and who writes by other rules makes all of them anew.
[[nodiscard]] const QString& KeysVersion();

// The words of a search: folded, split at blanks. A part is found when each word lies somewhere in its text.
[[nodiscard]] QStringList SearchWords(const QString& typed);

// What the search index stores for folded text: each pair of neighbouring characters of each word, and each
// word's last character with an end mark, as words of their own. Pairs rather than words, so that any piece
// of a name is found, in scripts without blanks too; two characters are all that many an operator types.
[[nodiscard]] QString SearchPairs(const QString& folded);

// What of the words the index can be asked for: pairs of neighbouring characters, and words of one character. A word
// with a surrogate is left whole.
[[nodiscard]] QStringList IndexTerms(const QStringList& words);

// The index's query for the parts that hold all pairs of all words: no part that matches is missed, but a
// match must still be looked at, since pairs do not say where they stand. Words must not be empty.
[[nodiscard]] QString PairQuery(const QStringList& words);

} // namespace partkeep
