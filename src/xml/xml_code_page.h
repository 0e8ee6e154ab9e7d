// Code pages of documents: their names in a declaration, and the way of names and texts between them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xml/xml_string.h"

namespace partkeep {

// The name as it is written in a declaration; null for a code page without one.
[[nodiscard]] const char* CodePageName(std::uint32_t code_page);

// Leaves `code_page` alone when the name, compared without regard to case, is none of the known ones.
void SetCodePageFromName(std::string_view name, std::uint32_t& code_page);

// False for a code page that the platform cannot convert.
[[nodiscard]] bool IsConvertible(std::uint32_t code_page);

// The same string by reference when the code pages are equal; null when there is no memory. Characters with no
// form in the target take the system's replacement.
[[nodiscard]] CXmlString TranscodeName(const CXmlString& name, std::uint32_t source, std::uint32_t target);

// A counted cell of its own: a 32-bit length and the bytes, no terminator.
class CXmlTextCell {
public:
    CXmlTextCell() = default;
    explicit CXmlTextCell(std::string_view text);
    CXmlTextCell(const CXmlTextCell&) = delete;
    CXmlTextCell& operator=(const CXmlTextCell&) = delete;
    ~CXmlTextCell();

    // Null when nothing was made.
    [[nodiscard]] const std::byte* Bytes() const { return cell_; }
    // 0 when nothing was made.
    [[nodiscard]] std::size_t Size() const;

private:
    std::byte* cell_ = nullptr;
};

// Nothing when the code pages are equal, the caller then goes on with what it had; nothing as well when there is
// no memory.
[[nodiscard]] CXmlTextCell TranscodeText(std::string_view text, std::uint32_t source, std::uint32_t target);

} // namespace partkeep
