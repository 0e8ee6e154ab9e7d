#include "partlibrary/library/library_names.h"

#include "partlibrary/library/library_text.h"

#include <QList>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace partkeep {

namespace {

bool IsControl(QChar unit)
{
    const char16_t code = unit.unicode();
    return code < u' ' || (code >= 0x7F && code <= 0x9F);
}

bool IsReserved(QChar unit)
{
    return QStringView(u"\\/:*?\"<>|").contains(unit);
}

// The system that the installation is shared with opens a device for these, whatever extension follows.
bool IsDeviceName(QStringView name)
{
    static constexpr std::array<QStringView, 7> plain{u"CON", u"PRN", u"AUX", u"NUL", u"CONIN$", u"CONOUT$", u"CLOCK$"};
    const qsizetype dot = name.indexOf(u'.');
    const QStringView stem = (dot < 0 ? name : name.first(dot)).trimmed();
    const auto is_stem = [stem](QStringView device) { return stem.compare(device, Qt::CaseInsensitive) == 0; };
    if (std::any_of(plain.begin(), plain.end(), is_stem)) {
        return true;
    }
    if (stem.size() != 4 || !QStringView(u"123456789\u00B9\u00B2\u00B3").contains(stem.back())) {
        return false;
    }
    const QStringView kind = stem.first(3);
    return kind.compare(u"COM", Qt::CaseInsensitive) == 0 || kind.compare(u"LPT", Qt::CaseInsensitive) == 0;
}

// U+FFFD stands for bytes that are no text.
NameFault CheckCharacters(QStringView text)
{
    if (!text.isValidUtf16() || text.contains(QChar(QChar::ReplacementCharacter))) {
        return NameFault::NotText;
    }
    return std::any_of(text.begin(), text.end(), IsControl) ? NameFault::ControlCharacter : NameFault::None;
}

// What most names are made of, blanks inside excepted: looked at with the least work, since a list looks at each.
bool IsPlain(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar unit) { return unit > u' ' && unit < QChar(0x7F); });
}

// A name that does not come back from the code page as it went in could be listed, but never fetched.
NameFault CheckNarrowForm(QStringView text, std::size_t limit)
{
    if (IsPlain(text) && SystemCodePage() == utf8_code_page) {
        return static_cast<std::size_t>(text.size()) > limit ? NameFault::TooLong : NameFault::None;
    }
    const std::string narrow = NarrowText(ViewOf(text));
    if (narrow.size() > limit) {
        return NameFault::TooLong;
    }
    return WidenText(narrow) == ViewOf(text) ? NameFault::None : NameFault::NotInCodePage;
}

NameFault CheckComponent(QStringView name)
{
    if (name.isEmpty()) {
        return NameFault::Empty;
    }
    if (const NameFault fault = CheckCharacters(name); fault != NameFault::None) {
        return fault;
    }
    if (std::any_of(name.begin(), name.end(), IsReserved)) {
        return NameFault::ReservedCharacter;
    }
    if (name.front().isSpace() || name.back().isSpace() || name.back() == u'.') {
        return NameFault::BadEnd;
    }
    return IsDeviceName(name) ? NameFault::DeviceName : NameFault::None;
}

} // namespace

NameFault CheckName(QStringView name)
{
    const NameFault fault = CheckComponent(name);
    return fault != NameFault::None ? fault : CheckNarrowForm(name, max_name_bytes);
}

NameFault CheckFolderPath(QStringView path)
{
    if (path.isEmpty()) {
        return NameFault::None;
    }
    for (const QStringView component : path.split(u'\\')) {
        if (const NameFault fault = CheckComponent(component); fault != NameFault::None) {
            return fault;
        }
    }
    return CheckNarrowForm(path, max_name_bytes);
}

NameFault CheckAttribute(QStringView text)
{
    const NameFault fault = CheckCharacters(text);
    return fault != NameFault::None ? fault : CheckNarrowForm(text, max_attribute_bytes);
}

QString FolderPath(QStringView text)
{
    while (text.startsWith(u'\\')) {
        text = text.sliced(1);
    }
    while (text.endsWith(u'\\')) {
        text.chop(1);
    }
    return text.toString();
}

QString NameFaultText(NameFault fault)
{
    switch (fault) {
    case NameFault::None:
        break;
    case NameFault::Empty:
        return QStringLiteral("the name is empty");
    case NameFault::TooLong:
        return QStringLiteral("the text is too long");
    case NameFault::NotText:
        return QStringLiteral("the text is malformed");
    case NameFault::ControlCharacter:
        return QStringLiteral("the text has a control character");
    case NameFault::ReservedCharacter:
        return QStringLiteral("the name has one of \\ / : * ? \" < > |");
    case NameFault::BadEnd:
        return QStringLiteral("the name begins with a blank, or ends with a blank or a dot");
    case NameFault::DeviceName:
        return QStringLiteral("the name is that of a device");
    case NameFault::NotInCodePage:
        return QStringLiteral("the text has a character that the system code page cannot hold");
    }
    return {};
}

QString JoinPath(const QString& left, const QString& right)
{
    return left.isEmpty() || right.isEmpty() ? left + right : left + u'\\' + right;
}

} // namespace partkeep
