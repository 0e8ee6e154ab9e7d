#include "partlibrary/sort_text.h"

#include <algorithm>
#include <initializer_list>

namespace partkeep {

namespace {

constexpr char32_t end_mark = 0xE000;            // private use, never typed
constexpr char32_t ascii_to_full_width = 0xFEE0; // from "!" to its full-width twin

bool IsDigit(QChar unit)
{
    return unit >= u'0' && unit <= u'9';
}

// The index takes letters, digits and everything beyond ASCII as part of a word; the full-width twins of
// ASCII marks are free, since folding has turned them all into ASCII.
char32_t AsWordCharacter(char32_t character)
{
    const bool mark = character > U' ' && character < 0x7F && !QChar::isLetterOrNumber(character);
    return mark ? character + ascii_to_full_width : character;
}

QString PairText(char32_t first, char32_t second)
{
    const char32_t pair[] = {AsWordCharacter(first), AsWordCharacter(second)};
    return QString::fromUcs4(pair, 2);
}

QStringList Words(const QString& folded)
{
    return folded.simplified().split(u' ', Qt::SkipEmptyParts);
}

QString Quoted(const QString& pair)
{
    return u'"' + pair + u'"';
}

} // namespace

QString FoldText(const QString& text)
{
    return text.normalized(QString::NormalizationForm_KC).toCaseFolded();
}

// A number is the byte "0", the count of its digits without leading zeros, and those digits.
QByteArray NaturalKey(const QString& folded)
{
    QByteArray key;
    qsizetype at = 0;
    while (at < folded.size() && key.size() < max_sort_key_bytes) {
        const bool number = IsDigit(folded[at]);
        qsizetype end = at + 1;
        while (end < folded.size() && IsDigit(folded[end]) == number) {
            ++end;
        }
        while (number && at + 1 < end && folded[at] == u'0') {
            ++at;
        }
        if (number) {
            key += '0';
            key += static_cast<char>(std::min<qsizetype>(end - at, 255));
        }
        key += QStringView(folded).sliced(at, end - at).toUtf8();
        at = end;
    }
    key.truncate(max_sort_key_bytes);
    return key;
}

QStringList SearchWords(const QString& typed)
{
    return Words(FoldText(typed));
}

QString SearchPairs(const QString& folded)
{
    QString pairs;
    for (const QString& word : Words(folded)) {
        const QList<uint> characters = word.toUcs4();
        for (qsizetype i = 0; i < characters.size(); ++i) {
            const char32_t next = i + 1 < characters.size() ? characters[i + 1] : end_mark;
            pairs += PairText(characters[i], next) + u' ';
        }
    }
    return pairs;
}

QString PairQuery(const QStringList& words)
{
    QStringList terms;
    for (const QString& word : words) {
        const QList<uint> characters = word.toUcs4();
        if (characters.size() == 1) {
            const char32_t single = AsWordCharacter(characters.front());
            terms += Quoted(QString::fromUcs4(&single, 1)) + u'*';
        }
        for (qsizetype i = 0; i + 1 < characters.size(); ++i) {
            terms += Quoted(PairText(characters[i], characters[i + 1]));
        }
    }
    terms.removeDuplicates();
    return terms.join(u' ');
}

} // namespace partkeep
