#include "xml/xml_reader.h"

#include "xml/xml_code_page.h"
#include "xml/xml_parser.h"

namespace partkeep {

std::byte* CXmlParser::Run()
{
    ParseDeclaration();
    if (code_page_ != utf8_code_page) {
        mould_ = CXmlMould(code_page_);
    }
    CXmlTreeBuilder tree(input_.Ahead());
    if (tree.HasFailed()) {
        input_.Fail();
    }
    input_.SkipTo<text_set>(true);
    std::byte* root = nullptr;
    while (root == nullptr && !input_.HasFailed() && !input_.AtEnd()) {
        root = ParseElement();
        input_.SkipTo<text_set>(true);
    }
    tree.Finish(root);
    return root;
}

void CXmlParser::ParseDeclaration()
{
    code_page_ = utf8_code_page;
    input_.SkipTo<question_mark>(true);
    input_.SkipTo<space_set>(true);
    input_.SkipSet<declaration_word_set>();
    CXmlToken word = input_.ReadToken<declaration_word_set>();
    while (!input_.AtEnd() && !input_.HasFailed() && !EqualUpToNul(word, ">")) {
        if (EqualUpToNul(word, "encoding")) {
            TakeEncoding();
        }
        input_.SkipSet<declaration_word_set>();
        word = input_.ReadToken<declaration_word_set>();
    }
}

void CXmlParser::TakeEncoding()
{
    input_.SkipTo<quote>(true);
    const CXmlToken name = input_.ReadToken<declaration_value_set>();
    SetCodePageFromName(name.substr(0, name.find('\0')), code_page_);
}

// A comment of one word, such as <!--c-->, has its closing dashes in that word.
void CXmlParser::SkipComment(CXmlToken first_word)
{
    const CXmlToken rest = first_word.substr(comment_start.size());
    const bool dashes = rest.size() >= comment_end.size() && rest.substr(rest.size() - 2) == comment_end;
    if (dashes && input_.Peek() == '>') {
        return;
    }
    while (!input_.AtEnd()) {
        input_.SkipTo<dash>(false);
        if (input_.SkipSet<dash>() >= comment_end.size() && input_.Peek() == '>') {
            return;
        }
    }
}

namespace {

template <class Source>
bool ReadInto(CXmlDocument& document, Source& source)
{
    const CXmlElement root(CXmlParser(source).Run());
    if (!root.IsEmpty()) {
        document = root;
    }
    return !root.IsEmpty();
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
    const bool read = ReadInto(document, stream);
    stream.exceptions(thrown);
    return read;
}

bool ReadXml(std::string_view text, CXmlDocument& document)
{
    return ReadInto(document, text);
}

} // namespace partkeep
