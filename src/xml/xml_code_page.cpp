#include "xml/xml_code_page.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string>

#include "platform/text.h"
#include "xml/xml_field.h"
#include "xml/xml_memory.h"

namespace partkeep {

namespace {

struct NamedCodePage {
    std::string_view name; // a terminated literal
    std::uint32_t code_page;
};

// The first name of a code page is the one that is written.
constexpr NamedCodePage named_code_pages[] = {
    {"Shift-JIS", shift_jis_code_page},
    {"Shift_JIS", shift_jis_code_page},
    {"UTF-8", utf8_code_page},
    {"UTF-7", utf7_code_page},
};

constexpr std::size_t length_width = 4;

char LowerAscii(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

bool EqualNoCaseAscii(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

std::optional<std::string> Convert(std::string_view text, std::uint32_t source, std::uint32_t target)
{
    try {
        return NarrowText(WidenText(text, source), target);
    } catch (const std::bad_alloc&) {
        return std::nullopt; // the standard library's strings know no other way to say it
    }
}

} // namespace

const char* CodePageName(std::uint32_t code_page)
{
    for (const NamedCodePage& named : named_code_pages) {
        if (named.code_page == code_page) {
            return named.name.data();
        }
    }
    return nullptr;
}

void SetCodePageFromName(std::string_view name, std::uint32_t& code_page)
{
    for (const NamedCodePage& named : named_code_pages) {
        if (EqualNoCaseAscii(name, named.name)) {
            code_page = named.code_page;
            return;
        }
    }
}

bool IsConvertible(std::uint32_t code_page)
{
    const auto converted = Convert("x", code_page, code_page);
    return converted.has_value() && *converted == "x";
}

CXmlString TranscodeName(const CXmlString& name, std::uint32_t source, std::uint32_t target)
{
    if (source == target || name.IsNull()) {
        return name;
    }
    const auto converted = Convert(name.Text(), source, target);
    return converted.has_value() ? CXmlString(converted->c_str()) : CXmlString();
}

CXmlTextCell::CXmlTextCell(std::string_view text)
{
    if (text.size() > 0xFFFFFFFFU - length_width) {
        return;
    }
    cell_ = static_cast<std::byte*>(AllocateXml(length_width + text.size(), 1));
    if (cell_ != nullptr) {
        PutBytes(PutField(cell_, static_cast<std::uint32_t>(text.size())), text);
    }
}

CXmlTextCell::~CXmlTextCell()
{
    FreeXml(cell_, Size());
}

std::size_t CXmlTextCell::Size() const
{
    return cell_ == nullptr ? 0 : length_width + LoadField<std::uint32_t>(cell_);
}

CXmlTextCell TranscodeText(std::string_view text, std::uint32_t source, std::uint32_t target)
{
    if (source == target) {
        return {};
    }
    const auto converted = Convert(text, source, target);
    return converted.has_value() ? CXmlTextCell(*converted) : CXmlTextCell();
}

} // namespace partkeep
