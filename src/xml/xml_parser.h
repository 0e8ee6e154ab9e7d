// The parser behind xml_reader.h: xml_reader.cpp has the document around the elements, xml_parser.cpp the elements.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/text.h"
#include "xml/xml_input.h"
#include "xml/xml_mould.h"
#include "xml/xml_parsing.h"

namespace partkeep {

inline constexpr std::string_view comment_start = "!--";
inline constexpr std::string_view comment_end = "--";

// Names are terminated texts: a NUL ends them. There is none in `name`.
inline bool EqualUpToNul(CXmlToken token, std::string_view name)
{
    return token.substr(0, name.size()) == name && (token.size() == name.size() || token[name.size()] == '\0');
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

    void ParseDeclaration();
    void TakeEncoding();
    std::byte* ParseElement();
    Outcome StartElement();
    Outcome OpenOrLeaf(std::byte* block);
    Outcome Open(std::byte* block);
    Outcome FinishElement();
    std::byte* FinishLeaf();
    std::byte* ParseAttributes();
    std::byte* MakeElement();
    [[nodiscard]] bool AddAttribute(std::byte*& tail);
    void SkipComment(CXmlToken first_word);
    bool ParseEndTag(const CXmlToken& name);
    // Notes the failure when there is no block.
    std::byte* Checked(std::byte* block);

    CXmlInput input_;
    std::uint32_t code_page_ = utf8_code_page;
    CXmlMould mould_{utf8_code_page};
    XmlOpenElements open_;
};

} // namespace partkeep
