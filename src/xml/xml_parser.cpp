#include "xml/xml_parser.h"

#include "xml/xml_reader.h"

namespace partkeep {

namespace {

// The name of a block that has only one.
std::string_view SingleNameOf(const std::byte* block)
{
    const std::byte* length = NameArrayOf(block) + XmlPlaces::counted;
    return {reinterpret_cast<const char*>(length + 4), LoadField<std::uint32_t>(length)};
}

// The place behind `name>`; null where something else stands.
const char* BehindEndTag(const char* at, const char* end, std::string_view name)
{
    const bool stands = static_cast<std::size_t>(end - at) > name.size() && EqualShort(at, name.data(), name.size()) &&
                        at[name.size()] == '>';
    return stands ? at + name.size() + 1 : nullptr;
}

void Append(std::byte*& tail, std::byte* block)
{
    HangBlock(tail, block);
    PutField(block + XmlPlaces::references, std::uint32_t{1}); // the link's; nobody else knows the block yet
    tail = LinkOf(RootOf(block));
}

// A new text leaf at the end of a chain, made and hung in one go; false when there is no memory.
inline bool AppendText(std::byte*& tail, std::string_view name, std::string_view text, std::uint32_t code_page)
{
    std::byte* block = AllocateXmlBlock(XmlPlaces::TextLeafSize(name.size(), text.size()));
    if (block == nullptr) {
        return false;
    }
    PackTextLeaf<xml_address_width>(block, name, text, code_page);
    HangBlock(tail, block);
    PutField(block + XmlPlaces::references, std::uint32_t{1});
    tail = RootOf(block) + XmlPlaces::counted + text.size();
    return true;
}

} // namespace

CXmlParser::~CXmlParser()
{
    for (const OpenElement& element : open_) {
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
                Append(open_.Last().tail, outcome.block);
            }
            input_.SkipTo<text_set>(true);
        }
        if (input_.AtEnd() || input_.Peek() == '/') {
            outcome = FinishElement();
        } else if (!QuickElement(outcome)) {
            outcome = StartElement();
        }
    }
    // Nothing that came out when memory failed is sure to be whole: its name may be lost.
    if (input_.HasFailed() && outcome.block != nullptr) {
        DestroyBlock(outcome.block);
        return nullptr;
    }
    return outcome.block;
}

// The quick way through what lies in the window in its usual form, <name>text</name> or <name>text<child. Where it is
// anything else, nothing has been taken, and the careful way goes through it again.
bool CXmlParser::QuickElement(Outcome& outcome)
{
    const char* name = input_.At();
    const char* end = input_.End();
    const char* name_end = Find<element_name_or_nul>(name, end);
    if (name_end == end || *name_end == '\0' || name_end == name || *name == '!' || open_.Size() == xml_nesting_limit) {
        return false;
    }
    const std::string_view name_view(name, static_cast<std::size_t>(name_end - name));
    if (*name_end != '>') {
        input_.Hold(CXmlInput::Place::ElementName, name_view);
        input_.TakeTo(name_end);
        outcome = GoOnBehindName();
        return true;
    }
    const char* text = name_end + 1;
    const char* text_end = Find<text_set>(text, end);
    if (end - text_end < 2) {
        return false;
    }
    if (text_end[1] != '/') {
        input_.TakeTo(text_end + 1);
        outcome = Open(Checked(MakeElementBlock(name_view, code_page_)));
        return true;
    }
    const char* behind = BehindEndTag(text_end + 2, end, name_view);
    if (behind == nullptr) {
        return false;
    }
    input_.TakeTo(behind);
    outcome = {};
    const std::string_view text_view(text, static_cast<std::size_t>(text_end - text));
    if (!AppendText(open_.Last().tail, name_view, text_view, code_page_)) {
        input_.Fail();
    }
    return true;
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
    return GoOnBehindName();
}

CXmlParser::Outcome CXmlParser::GoOnBehindName()
{
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
    if (const char* behind = BehindEndTag(input_.At(), input_.End(), name)) {
        input_.TakeTo(behind);
        return true;
    }
    if (!input_.SkipWord<element_name_set>(name) && UpToNul(input_.ReadToken<element_name_set>()) != name) {
        return false;
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
        if (!QuickAttribute(tail) && !AddAttribute(tail)) {
            DestroyBlock(block);
            return nullptr;
        }
        input_.SkipSet<space_set>();
    }
    return block;
}

// name="value", all in the window. False where it is anything else, with nothing taken.
bool CXmlParser::QuickAttribute(std::byte*& tail)
{
    const char* name = input_.At();
    const char* end = input_.End();
    const char* name_end = Find<attribute_name_or_nul>(name, end);
    if (end - name_end < 2 || name_end[0] != '=' || name_end[1] != '"') {
        return false;
    }
    const char* value = name_end + 2;
    const char* value_end = Find<quote>(value, end);
    if (value_end == end) {
        return false;
    }
    const std::string_view name_view(name, static_cast<std::size_t>(name_end - name));
    const std::string_view value_view(value, static_cast<std::size_t>(value_end - value));
    if (!AppendText(tail, name_view, value_view, code_page_)) {
        return false;
    }
    input_.TakeTo(value_end + 1);
    return true;
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
    Append(tail, attribute);
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
