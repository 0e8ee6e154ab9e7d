#include "xml/xml_reader.h"

#include <string_view>

#include "platform/text.h"
#include "xml/xml_code_page.h"
#include "xml/xml_input.h"

namespace partkeep {

namespace {

constexpr XmlByteSet XmlElementNameSet(">/ \n\t");
constexpr XmlByteSet XmlAttributeNameSet("= \n\t");
constexpr XmlByteSet XmlSpaceSet(" \n\t");
constexpr XmlByteSet XmlDeclWordSet("?<=\" \n\t");
constexpr XmlByteSet XmlDeclValueSet("<>=\" \n\t");
constexpr XmlByteSet dash_set("-");

constexpr std::string_view comment_start = "!--";
constexpr std::string_view comment_end = "--";

// Names are terminated texts: a NUL ends them.
CXmlToken UpToNul(CXmlToken token)
{
    return token.substr(0, token.find('\0'));
}

// The name of a block that has only one.
std::string_view SingleNameOf(const std::byte* block)
{
    const std::byte* length = NameArrayOf(block) + XmlPlaces::counted;
    return {reinterpret_cast<const char*>(length + 4), LoadField<std::uint32_t>(length)};
}

void Append(std::byte*& tail, std::byte* block)
{
    HangBlock(tail, block);
    AddReference(block);
    tail = LinkOf(RootOf(block));
}

class CXmlReader {
public:
    explicit CXmlReader(std::istream& stream) : input_(stream) {}
    CXmlReader(const CXmlReader&) = delete;
    CXmlReader& operator=(const CXmlReader&) = delete;
    ~CXmlReader();

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
    Outcome StartElement();
    Outcome OpenOrLeaf(std::byte* block);
    Outcome FinishElement();
    std::byte* FinishLeaf();
    std::byte* ParseAttributes();
    std::byte* MakeElement();
    [[nodiscard]] bool AddAttribute(std::byte*& tail);
    void SkipComment(CXmlToken first_word);
    bool ParseEndTag(std::string_view name);
    // Notes the failure when there is no block.
    std::byte* Checked(std::byte* block);

    CXmlInput input_;
    std::uint32_t code_page_ = utf8_code_page;
    CXmlVector<OpenElement> open_;
};

CXmlReader::~CXmlReader()
{
    for (const OpenElement& element : open_) {
        DestroyBlock(element.block);
    }
}

std::byte* CXmlReader::Run()
{
    ParseDeclaration();
    CXmlTreeBuilder tree(input_.Ahead());
    if (tree.HasFailed()) {
        input_.Fail();
    }
    input_.SkipTo('<', true);
    std::byte* root = nullptr;
    while (root == nullptr && !input_.HasFailed() && !input_.AtEnd()) {
        root = ParseElement();
        input_.SkipTo('<', true);
    }
    tree.Finish(root);
    return root;
}

void CXmlReader::ParseDeclaration()
{
    code_page_ = utf8_code_page;
    input_.SkipTo('?', true);
    input_.SkipTo(XmlSpaceSet, true);
    input_.SkipSet(XmlDeclWordSet);
    CXmlToken word = input_.ReadToken(XmlDeclWordSet);
    while (!input_.AtEnd() && !input_.HasFailed() && UpToNul(word) != ">") {
        if (UpToNul(word) == "encoding") {
            TakeEncoding();
        }
        input_.SkipSet(XmlDeclWordSet);
        word = input_.ReadToken(XmlDeclWordSet);
    }
}

// A name that found no memory must not pass for an unknown one: the document would be read in another code page.
void CXmlReader::TakeEncoding()
{
    input_.SkipTo('"', true);
    const CXmlString name(input_.ReadToken(XmlDeclValueSet));
    if (name.IsNull()) {
        input_.Fail();
    }
    SetCodePageFromName(name, code_page_);
}

// An element with all it holds; null for a comment or a malformed one. Nesting is kept in open_, not on the stack.
std::byte* CXmlReader::ParseElement()
{
    Outcome outcome = StartElement();
    while (!open_.IsEmpty() && !input_.HasFailed()) {
        if (!outcome.opened) {
            if (outcome.block != nullptr) {
                Append(open_.Last().tail, outcome.block);
            }
            input_.SkipTo('<', true);
        }
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
CXmlReader::Outcome CXmlReader::StartElement()
{
    const CXmlToken word = input_.ReadToken(XmlElementNameSet);
    if (word.substr(0, comment_start.size()) == comment_start) {
        SkipComment(word);
        return {};
    }
    input_.Hold(CXmlInput::element_name, UpToNul(word));
    if (input_.Held(CXmlInput::element_name).empty()) {
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
    input_.SkipTo('>', true);
    if (closed) {
        return {block != nullptr ? block : MakeElement()};
    }
    return OpenOrLeaf(block);
}

// Behind a start tag. `block` is null for an element without attributes: only that can be a leaf.
CXmlReader::Outcome CXmlReader::OpenOrLeaf(std::byte* block)
{
    input_.Hold(CXmlInput::text, input_.ReadToken('<'));
    input_.SkipTo('<', true);
    if (block == nullptr && input_.Peek() == '/') {
        return {FinishLeaf()};
    }
    if (block == nullptr) {
        block = MakeElement();
    }
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

std::byte* CXmlReader::MakeElement()
{
    return Checked(MakeElementBlock(input_.Held(CXmlInput::element_name), code_page_));
}

std::byte* CXmlReader::FinishLeaf()
{
    std::byte* leaf =
        Checked(MakeTextBlock(input_.Held(CXmlInput::element_name), input_.Held(CXmlInput::text), code_page_));
    if (leaf != nullptr && !ParseEndTag(SingleNameOf(leaf))) {
        DestroyBlock(leaf);
        return nullptr;
    }
    return leaf;
}

CXmlReader::Outcome CXmlReader::FinishElement()
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
bool CXmlReader::ParseEndTag(std::string_view name)
{
    input_.SkipTo('/', true);
    if (!input_.SkipWord(name, XmlElementNameSet) && UpToNul(input_.ReadToken(XmlElementNameSet)) != name) {
        return false;
    }
    input_.SkipTo('>', true);
    return !input_.HasFailed();
}

// A new element with its attributes; null when there are none.
std::byte* CXmlReader::ParseAttributes()
{
    std::byte* block = nullptr;
    std::byte* tail = nullptr;
    input_.SkipSet(XmlSpaceSet);
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
        input_.SkipSet(XmlSpaceSet);
    }
    return block;
}

bool CXmlReader::AddAttribute(std::byte*& tail)
{
    input_.Hold(CXmlInput::attribute_name, UpToNul(input_.ReadToken(XmlAttributeNameSet)));
    input_.SkipTo('"', true);
    const CXmlToken value = input_.ReadToken('"');
    if (input_.HasFailed()) {
        return false;
    }
    std::byte* attribute = Checked(MakeTextBlock(input_.Held(CXmlInput::attribute_name), value, code_page_));
    if (attribute == nullptr) {
        return false;
    }
    Append(tail, attribute);
    input_.SkipTo('"', true);
    return true;
}

// A comment of one word, such as <!--c-->, has its closing dashes in that word.
void CXmlReader::SkipComment(CXmlToken first_word)
{
    const CXmlToken rest = first_word.substr(comment_start.size());
    const bool dashes = rest.size() >= comment_end.size() && rest.substr(rest.size() - 2) == comment_end;
    if (dashes && input_.Peek() == '>') {
        return;
    }
    while (!input_.AtEnd()) {
        input_.SkipTo('-', false);
        if (input_.SkipSet(dash_set) >= comment_end.size() && input_.Peek() == '>') {
            return;
        }
    }
}

std::byte* CXmlReader::Checked(std::byte* block)
{
    if (block == nullptr) {
        input_.Fail();
    }
    return block;
}

} // namespace

bool ReadXml(std::istream& stream, CXmlDocument& document)
{
    if (stream.fail()) {
        return false;
    }
    // A stream that throws at its caller's wish does so when all is done: nothing may fly through half a document.
    const std::ios_base::iostate thrown = stream.exceptions();
    stream.exceptions(std::ios_base::goodbit);
    const CXmlElement root(CXmlReader(stream).Run());
    if (!root.IsEmpty()) {
        document = root;
    }
    stream.exceptions(thrown);
    return !root.IsEmpty();
}

} // namespace partkeep
