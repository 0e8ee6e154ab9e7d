// What the two ways of the parser share: the sets of delimiters, and the elements that are open.
#pragma once

#include <cstddef>
#include <string_view>

#include "xml/xml_block.h"
#include "xml/xml_bytes.h"
#include "xml/xml_vector.h"

namespace partkeep {

inline constexpr CXmlByteSet element_name_set(">/ \n\t");
inline constexpr CXmlByteSet attribute_name_set("= \n\t");
inline constexpr CXmlByteSet text_set("<");
inline constexpr CXmlByteSet space_set(" \n\t");
inline constexpr CXmlByteSet declaration_word_set("?<=\" \n\t");
inline constexpr CXmlByteSet declaration_value_set("<>=\" \n\t");
// A NUL ends a name, though not its token.
inline constexpr CXmlByteSet element_name_or_nul("\0>/ \n\t");
inline constexpr CXmlByteSet attribute_name_or_nul("\0= \n\t");
inline constexpr CXmlByteSet question_mark("?");
inline constexpr CXmlByteSet quote("\"");
inline constexpr CXmlByteSet slash("/");
inline constexpr CXmlByteSet tag_end(">");
inline constexpr CXmlByteSet dash("-");

struct XmlOpenElement {
    std::byte* block;
    std::byte* tail; // the slot for its next child
};
using XmlOpenElements = CXmlVector<XmlOpenElement>;

// Hangs a finished element into the slot at the end of a chain, which becomes its link.
inline void HangElement(std::byte*& tail, std::byte* block)
{
    HangBlock(tail, block);
    PutField(block + XmlPlaces::references, std::uint32_t{1}); // the link's; nobody else knows the block yet
    tail = LinkOf(RootOf(block));
}

// The name of a block that has only one.
inline std::string_view SingleNameOf(const std::byte* block)
{
    const std::byte* length = NameArrayOf(block) + XmlPlaces::counted;
    return {reinterpret_cast<const char*>(length + 4), LoadField<std::uint32_t>(length)};
}

// The place behind `name>`, which is looked for from `at` on; null where something else stands.
inline const char* BehindEndTag(const char* at, const char* end, std::string_view name)
{
    const bool stands = static_cast<std::size_t>(end - at) > name.size() && EqualShort(at, name.data(), name.size()) &&
                        at[name.size()] == '>';
    return stands ? at + name.size() + 1 : nullptr;
}

} // namespace partkeep
