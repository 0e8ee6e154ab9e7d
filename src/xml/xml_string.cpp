#include "xml/xml_string.h"

#include <cstring>

#include "xml/xml_memory.h"

namespace partkeep {

namespace {

constexpr std::size_t cell_overhead = 9; // length, terminator, references
constexpr std::size_t longest_text = 0xFFFFFFFFU - cell_overhead;

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
    at = PutField(PutBytes(at, text), std::uint8_t{0});
    PutField(at, std::uint32_t{1});
    return cell;
}

} // namespace

std::byte CXmlString::lost_cell_[cell_overhead] = {{}, {}, {}, {}, {}, std::byte{1}};

CXmlString::CXmlString(const char* text, std::ptrdiff_t length)
{
    if (text != nullptr) {
        Take(MakeCell({text, length == -1 ? std::strlen(text) : static_cast<std::size_t>(length)}));
    }
}

CXmlString::CXmlString(std::string_view text)
{
    Take(MakeCell(text));
}

void CXmlString::Free()
{
    FreeXml(cell_, Length() + cell_overhead);
}

} // namespace partkeep
