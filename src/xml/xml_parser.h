// The parser behind xml_reader.h: xml_reader.cpp has the document around the elements, xml_parser.cpp the elements.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/text.h"
#include "xml/xml_block.h"
#include "xml/xml_input.h"
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

inline constexpr std::string_view comment_start = "!--";
inline constexpr std::string_view comment_end = "--";

// Names are terminated texts: a NUL ends them.
inline CXmlToken UpToNul(CXmlToken token)
{
    return token.substr(0, token.find('\0'));
}

class CXmlParser {
public:
    template <class Source>
    explicit CXmlParser(Source& source) : input_(source)
    {
    }
    CXmlParser(const CXmlParser&) = delete;
    CXmlParser& operator=(const CXmlParser&) = delete;
    ~CXmlParser();

    // The root's block, without references; null when there is none.
    std::byte* Run();

private:
    // What came out of a tag: a finished element, nothing, or, without a block here, one that is open for its children.
    struct Outcome {
        std::byte* block = nullptr;
        bool opened = false;
    };
    struct OpenElement {
        std::byte* block;
        std::byte* tail; // the slot for its next child
    };

    void ParseDeclaration();
    void TakeEncoding();
    std::byte* ParseElement();
    [[nodiscard]] bool QuickElement(Outcome& outcome);
    Outcome StartElement();
    Outcome GoOnBehindName();
    Outcome OpenOrLeaf(std::byte* block);
    Outcome Open(std::byte* block);
    Outcome FinishElement();
    std::byte* FinishLeaf();
    std::byte* ParseAttributes();
    std::byte* MakeElement();
    [[nodiscard]] bool QuickAttribute(std::byte*& tail);
    [[nodiscard]] bool AddAttribute(std::byte*& tail);
    void SkipComment(CXmlToken first_word);
    bool ParseEndTag(const CXmlToken& name);
    // Notes the failure when there is no block.
    std::byte* Checked(std::byte* block);

    CXmlInput input_;
    std::uint32_t code_page_ = utf8_code_page;
    CXmlVector<OpenElement> open_;
};

} // namespace partkeep
