#include "xml/xml_parser.h"

#include "xml/xml_quick_parser.h"
#include "xml/xml_reader.h"

namespace partkeep {

CXmlParser::~CXmlParser()
{
    for (const XmlOpenElement& element : open_) {
        DestroyBlock(element.block);
    }
}

// An element with all it holds; null for a comment or a malformed one. Nesting is kept in open_, not on the stack.
std::byte* CXmlParser::ParseElement()
{
    Outcome outcome = StartElement();
    while (!open_.IsEmpty() && !input_.HasFailed()) {
        if (!outcome.opened) {
            if (outcome.block != nullptr) {
                HangElement(open_.Last().tail, outcome.block);
            }
            input_.SkipTo<text_set>(true);
        }
        input_.TakeTo(TakeUsualElements(input_.Window(), mould_, open_));
        outcome = input_.AtEnd() || input_.Peek() == '/' ? FinishElement() : StartElement();
    }
    // Nothing that came out when memory failed is sure to be whole: its name may be lost.
    if (input_.HasFailed() && outcome.block != nullptr) {
        DestroyBlock(outcome.block);
        return nullptr;
    }
    return outcome.block;
}

// The input stands behind a "<".
CXmlParser::Outcome CXmlParser::StartElement()
{
    const CXmlToken word = input_.ReadToken<element_name_or_nul>();
    if (word.substr(0, comment_start.size()) == comment_start) {
        SkipComment(word);
        return {};
    }
    input_.Hold(CXmlInput::Place::ElementName, word);
    input_.SkipTo<element_name_set>(false);
    if (input_.Held(CXmlInput::Place::ElementName).empty()) {
        return {};
    }
    if (open_.Size() == xml_nesting_limit) {
        input_.Fail();
        return {};
    }
    std::byte* block = ParseAttributes();
    if (input_.HasFailed()) {
        return {block};
    }
    const bool closed = input_.Peek() == '/';
    input_.SkipTo<tag_end>(true);
    if (closed) {
        return {block != nullptr ? block : MakeElement()};
    }
    return OpenOrLeaf(block);
}

// Behind a start tag. `block` is null for an element without attributes: only that can be a leaf.
CXmlParser::Outcome CXmlParser::OpenOrLeaf(std::byte* block)
{
    input_.Hold(CXmlInput::Place::Text, input_.ReadToken<text_set>());
    input_.SkipTo<text_set>(true);
    if (block == nullptr && input_.Peek() == '/') {
        return {FinishLeaf()};
    }
    return Open(block != nullptr ? block : MakeElement());
}

// Nothing where there is no block.
CXmlParser::Outcome CXmlParser::Open(std::byte* block)
{
    if (block == nullptr) {
        return {};
    }
    if (!open_.Add({block, LastSlotOf(RootOf(block))})) {
        DestroyBlock(block);
        input_.Fail();
        return {};
    }
    return {nullptr, true};
}

std::byte* CXmlParser::MakeElement()
{
    return Checked(MakeElementBlock(input_.Held(CXmlInput::Place::ElementName), code_page_));
}

std::byte* CXmlParser::FinishLeaf()
{
    if (!ParseEndTag(input_.Held(CXmlInput::Place::ElementName))) {
        return nullptr;
    }
    return Checked(
        MakeTextBlock(input_.Held(CXmlInput::Place::ElementName), input_.Held(CXmlInput::Place::Text), code_page_));
}

CXmlParser::Outcome CXmlParser::FinishElement()
{
    std::byte* block = open_.Last().block;
    const bool well_formed = ParseEndTag(SingleNameOf(block));
    open_.RemoveLast();
    if (!well_formed) {
        DestroyBlock(block);
        return {};
    }
    return {block};
}

// False for a foreign name; the input then stays in front of the rest of the tag.
bool CXmlParser::ParseEndTag(const CXmlToken& name)
{
    input_.SkipTo<slash>(true);
    if (const char* behind = BehindEndTag(input_.Window().at, input_.Window().end, name)) {
        input_.TakeTo(behind);
        return true;
    }
    if (!input_.SkipWord<element_name_set>(name)) {
        const CXmlToken word = input_.ReadToken<element_name_set>(); // before `name` is looked at, which may move
        if (!EqualUpToNul(word, name)) {
            return false;
        }
    }
    input_.SkipTo<tag_end>(true);
    return !input_.HasFailed();
}

// A new element with its attributes; null when there are none.
std::byte* CXmlParser::ParseAttributes()
{
    std::byte* block = nullptr;
    std::byte* tail = nullptr;
    input_.SkipSet<space_set>();
    while (!input_.AtEnd() && input_.Peek() != '/' && input_.Peek() != '>') {
        if (block == nullptr) {
            block = MakeElement();
            if (block == nullptr) {
                return nullptr;
            }
            tail = LastSlotOf(HolderOf(RootOf(block)));
        }
        if (!AddAttribute(tail)) {
            DestroyBlock(block);
            return nullptr;
        }
        input_.SkipSet<space_set>();
    }
    return block;
}

bool CXmlParser::AddAttribute(std::byte*& tail)
{
    input_.Hold(CXmlInput::Place::AttributeName, input_.ReadToken<attribute_name_or_nul>());
    input_.SkipTo<attribute_name_set>(false);
    input_.SkipTo<quote>(true);
    const CXmlToken value = input_.ReadToken<quote>();
    if (input_.HasFailed()) {
        return false;
    }
    std::byte* attribute = Checked(MakeTextBlock(input_.Held(CXmlInput::Place::AttributeName), value, code_page_));
    if (attribute == nullptr) {
        return false;
    }
    HangElement(tail, attribute);
    input_.SkipTo<quote>(true);
    return true;
}

std::byte* CXmlParser::Checked(std::byte* block)
{
    if (block == nullptr) {
        input_.Fail();
    }
    return block;
}

} // namespace partkeep
