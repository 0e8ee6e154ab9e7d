#include "partlibrary/library/sort_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <unicode/ucol.h>
#include <unicode/uversion.h>

namespace partkeep {

namespace {

constexpr const char* keys_locale = "root";
constexpr char32_t end_mark = 0xE000; // private use, never typed
constexpr char16_t hiragana_to_katakana = 0x60;
constexpr char32_t ascii_to_full_width = 0xFEE0; // from "!" to its full-width twin

constexpr std::size_t longest_key = 8192; // of the longest text that a library takes, by far

// Letter case does not count, a run of digits counts as a number. Open as long as the process runs.
const UCollator* Collator()
{
    static const UCollator* const collator = [] {
        UErrorCode error = U_ZERO_ERROR;
        UCollator* const made = ucol_open(keys_locale, &error);
        ucol_setStrength(made, UCOL_SECONDARY);
        ucol_setAttribute(made, UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
        return made;
    }();
    return collator;
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

// Marks are taken off the letters of Europe alone: those of kana tell one syllable from another.
QString FoldText(const QString& text)
{
    if (std::all_of(text.begin(), text.end(), [](QChar unit) { return unit < QChar(0x80); })) {
        return text.toLower();
    }
    QString folded = text.normalized(QString::NormalizationForm_KD);
    folded.removeIf([](QChar unit) { return unit >= QChar(0x300) && unit <= QChar(0x36F); });
    folded = folded.normalized(QString::NormalizationForm_KC).toCaseFolded();
    for (QChar& unit : folded) {
        const bool hiragana = unit >= QChar(0x3041) && unit <= QChar(0x3096);
        unit = hiragana ? QChar(unit.unicode() + hiragana_to_katakana) : unit;
    }
    return folded;
}

QByteArray SortKey(const QString& text)
{
    std::array<std::uint8_t, longest_key> key{};
    const auto* const units = reinterpret_cast<const UChar*>(text.utf16());
    const std::int32_t size = ucol_getSortKey(Collator(), units, static_cast<std::int32_t>(text.size()), key.data(),
                                              static_cast<std::int32_t>(key.size()));
    const auto kept = std::clamp<qsizetype>(size - 1, 0, max_sort_key_bytes); // without the zero at its end
    return {reinterpret_cast<const char*>(key.data()), kept};
}

QString SearchText(const PartRow& part)
{
    return FoldText(part.name + u'\n' + part.material + u'\n' + part.machine + u'\n' + part.comment);
}

const QString& KeysVersion()
{
    static const QString rules = [] {
        UVersionInfo version{};
        std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
        ucol_getVersion(Collator(), version);
        u_versionToString(version, text.data());
        return QStringLiteral("ICU %1 %2, text 1").arg(QLatin1String(keys_locale), QLatin1String(text.data()));
    }();
    return rules;
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

QStringList IndexTerms(const QStringList& words)
{
    QStringList terms;
    for (const QString& word : words) {
        const bool plain = std::none_of(word.begin(), word.end(), [](QChar unit) { return unit.isSurrogate(); });
        if (!plain || word.size() == 1) {
            terms += word;
            continue;
        }
        for (qsizetype at = 0; at + 1 < word.size(); ++at) {
            terms += word.mid(at, 2);
        }
    }
    terms.removeDuplicates();
    return terms;
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
