#include "xml/xml_string.h"

#include <cstring>

#include "xml/xml_field.h"
#include "xml/xml_memory.h"

namespace partkeep {

namespace {

constexpr std::size_t length_width = 4;
constexpr std::size_t cell_overhead = 9; // length, terminator, references
constexpr std::size_t longest_text = 0xFFFFFFFFU - cell_overhead;

std::byte* ReferencesIn(std::byte* cell)
{
    return cell + length_width + LoadField<std::uint32_t>(cell) + 1;
}

std::byte* MakeCell(std::string_view text)
{
    if (text.size() > longest_text) {
        return nullptr;
    }
    auto* cell = static_cast<std::byte*>(AllocateXml(text.size() + cell_overhead, 1));
    if (cell == nullptr) {
        return nullptr;
    }
    std::byte* at = PutField(cell, static_cast<std::uint32_t>(text.size()));
    at = PutBytes(at, text);
    at = PutField(at, std::uint8_t{0});
    PutField(at, std::uint32_t{1});
    return cell;
}

} // namespace

CXmlString::CXmlString(const char* text, std::ptrdiff_t length)
{
    if (text != nullptr) {
        cell_ = MakeCell({text, length == -1 ? std::strlen(text) : static_cast<std::size_t>(length)});
    }
}

CXmlString::CXmlString(std::string_view text) : cell_(MakeCell(text)) {}

std::uint32_t CXmlString::Length() const
{
    return cell_ == nullptr ? 0 : LoadField<std::uint32_t>(cell_);
}

const char* CXmlString::Text() const
{
    return cell_ == nullptr ? nullptr : reinterpret_cast<const char*>(cell_ + length_width);
}

std::uint32_t CXmlString::References() const
{
    return cell_ == nullptr ? 0 : LoadField<std::uint32_t>(ReferencesIn(cell_));
}

void CXmlString::AddReference()
{
    if (cell_ != nullptr) {
        PutField(ReferencesIn(cell_), References() + 1);
    }
}

void CXmlString::DropReference()
{
    if (cell_ == nullptr) {
        return;
    }
    const std::uint32_t left = References() - 1;
    if (left != 0) {
        PutField(ReferencesIn(cell_), left);
        return;
    }
    FreeXml(cell_, Length() + cell_overhead);
}

} // namespace partkeep
