#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <sstream>

#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

// Gives its bytes in windows of some width; 0 for a buffer without a window, byte by byte.
class Pieces : public std::streambuf {
public:
    Pieces(std::string_view text, std::size_t width) : text_(text), width_(width) {}
    std::size_t Taken() const { return at_ - static_cast<std::size_t>(egptr() - gptr()); }

protected:
    int_type underflow() override
    {
        if (at_ == text_.size()) {
            return traits_type::eof();
        }
        if (width_ == 0) {
            return traits_type::to_int_type(text_[at_]);
        }
        window_ = text_.substr(at_, width_); // the window before is gone
        at_ += window_.size();
        setg(window_.data(), window_.data(), window_.data() + window_.size());
        return traits_type::to_int_type(window_[0]);
    }
    int_type uflow() override
    {
        if (width_ != 0) {
            return std::streambuf::uflow();
        }
        return at_ == text_.size() ? traits_type::eof() : traits_type::to_int_type(text_[at_++]);
    }

private:
    std::string text_;
    std::string window_;
    std::size_t width_;
    std::size_t at_ = 0;
};

struct Outcome {
    std::string shown = "-";
    std::size_t taken = 0;
    bool ended = false;

    bool operator==(const Outcome&) const = default;
};

Outcome ReadInPieces(std::string_view text, std::size_t width)
{
    Pieces pieces(text, width);
    std::istream stream(&pieces);
    CXmlDocument document;
    Outcome outcome;
    if (ReadXml(stream, document)) {
        outcome.shown = Show(document);
    }
    outcome.taken = pieces.Taken();
    outcome.ended = stream.eof();
    return outcome;
}

struct Row {
    const char* label;
    std::string text;
    std::string shown; // written again without line breaks; "-" when nothing is read
    bool declared = true;
};

const Row rows[] = {
    {"an empty element", "<R/>", "<R/>"},
    {"an empty leaf", "<R></R>", "<R></R>"},
    {"blanks behind names", "<R >x</R >", "<R>x</R>"},
    {"a blank behind the slash", "<R/ >", "<R/>"},
    {"attributes in order", R"(<R x = "1" y="2"/>)", R"(<R x="1" y="2"/>)"},
    {"attributes on lines", "<R\n\tx=\"1\"\n\ty\n=\n\"2\"\n/>", R"(<R x="1" y="2"/>)"},
    {"no blank between attributes", R"(<R x="1"y="2"/>)", R"(<R x="1" y="2"/>)"},
    {"delimiters in a value", "<R x=\"a>b</\n'\"/>", "<R x=\"a>b</\n'\"/>"},
    {"text beside attributes", R"(<R x="1">t</R>)", R"(<R x="1"/>)"},
    {"an empty text beside attributes", R"(<R a="1"></R>)", R"(<R a="1"/>)"},
    {"text before a child", "<R>t<b/></R>", "<R><b/></R>"},
    {"text behind a child", "<R><b/>t</R>", "<R><b/></R>"},
    {"text before a comment", "<R>t<!-- c --></R>", "<R/>"},
    {"blanks are text", "<R>  a  </R>", "<R>  a  </R>"},
    {"entities stay", "<R>a &amp; b</R>", "<R>a &amp; b</R>"},
    {"a wrong end tag inside", "<R><b>x</c><d/></R>", "<R><d/></R>"},
    {"a wrong end tag of an element inside", "<R><b><e/></c><d/></R>", "<R><d/></R>"},
    {"a wrong end tag of the root", "<a></b><c></c>", "<c></c>"},
    {"an end tag that is missing inside", "<a><b></a>", "-"},
    {"an end tag that is missing", "<a>", "-"},
    {"the end within an element", "<a><b/>", "-"},
    {"the end within a name", "<a", "-"},
    {"a second root", "<R/><S/>", "<R/>"},
    {"text before the root", "\ntext<R/>", "<R/>"},
    {"text against the declaration", "text<R/>", "-"},
    {"dashes in a comment", "<R><!-- c -- d --><a/><!-- c ---></R>", "<R><a/></R>"},
    {"a comment before the root", "<!-- <S/> --><R/>", "<R/>"},
    {"a comment of one word", "<!--c--><R><!--d--><a/><!----></R>", "<R><a/></R>"},
    {"one word with more behind", "<R><!--c-- d--><a/></R>", "<R><a/></R>"},
    {"dashes of the opening alone", "<R><!--><b/>--><a/></R>", "<R><a/></R>"},
    {"a comment that never ends", "<R/><!-- x", "<R/>"},
    {"a comment that never ends inside", "<R><!-- x</R>", "-"},
    {"a blank for a name", "<R>< /><a/></R>", "<R><a/></R>"},
    {"nothing for a name", "<><R/>", "<R/>"},
    {"a NUL for a name", std::string("<\0a/><R/>", 9), "<R/>"},
    {"a NUL within a name", std::string("<a\0b>x</a\0c>", 12), "<a>x</a>"},
    {"a NUL within a text", std::string("<a>x\0y</a>", 10), "<a>x</a>"},
    {"an end tag for a root", "</a><R/>", "<R/>"},
    {"an attribute without quotes", "<R><a x=1/><b/></R>", "-"},
    {"an attribute without quotes, quotes later", R"(<R><a x=1/><b y="2"/></R>)", R"(<R><a x="2"/></R>)"},
    {"single quotes", "<R x='1'/><S/>", "-"},
    {"a nameless attribute", R"(<R ="1"/>)", R"(<R ="1"/>)"},
    {"the byte 0xFF", "<R>\xFF<\xFF/></R>", "<R><\xFF/></R>"},
    {"carriage returns are text", "<R>\r\n<a>x\r\n</a>\r\n</R>", "<R><a>x\r\n</a></R>"},
    {"a carriage return in a tag", "<R\r\n></R\r>", "<R\r></R\r>"},
    {"CDATA", "<R><![CDATA[<a/>]]></R>", "<R><![CDATA[<a/></R>"},
    {"nothing", "", "-", false},
    {"blanks alone", " \n", "-", false},
    {"no question mark", "<R/>", "-", false},
    {"an empty declaration", "<? ?><R/>", "<R/>", false},
    {"no space in the declaration", "<?xml?><R><a/></R>", "-", false},
    {"no space in the declaration, a lone bracket later", "<?xml?><R> <a/> > </R><S/>", "<S/>", false},
    {"a declaration that goes on", "<?xml x?>y><R/>\n><S/>", "<S/>", false},
    {"an encoding in single quotes", R"(<?xml encoding='UTF-8'?><R x="1"/><S/>)", "-", false},
    {"an encoding in single quotes, more quotes", "<?xml encoding='UTF-8'?><R x=\"1\"/>\n>\n<S/>", "<S/>", false},
};

// Each row whole, in windows of every small width, and byte by byte: what is read and where the stream stands is
// the same, whatever lies in the stream's buffer.
TEST(XmlReader, TakesEveryInputToItsOutcome)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        const std::string text = row.declared ? std::string(declaration) + row.text : row.text;
        const Outcome whole = ReadInPieces(text, text.size() + 1);
        EXPECT_EQ(whole.shown, row.shown);
        for (std::size_t width = 0; width < 20; ++width) {
            EXPECT_EQ(ReadInPieces(text, width), whole) << width;
        }
    }
}

TEST(XmlReader, LeavesTheStreamBehindTheRoot)
{
    std::istringstream stream(std::string(declaration) + "<R/> x <S/>");
    CXmlDocument document;
    EXPECT_TRUE(ReadXml(stream, document));
    std::string rest;
    EXPECT_TRUE(std::getline(stream, rest));
    EXPECT_EQ(rest, "S/>");

    std::istringstream last(std::string(declaration) + "<R/>");
    EXPECT_TRUE(ReadXml(last, document));
    EXPECT_TRUE(last.eof());
}

TEST(XmlReader, AFailedReadLeavesTheDocumentAsItWas)
{
    CXmlDocument document = Read(std::string(declaration) + "<R/>");
    std::istringstream bad("<?xml ?><a>");
    EXPECT_FALSE(ReadXml(bad, document));
    std::istringstream failed(std::string(declaration) + "<S/>");
    failed.setstate(std::ios_base::failbit);
    EXPECT_FALSE(ReadXml(failed, document));
    EXPECT_EQ(Show(document), "<R/>");
}

TEST(XmlReader, TakesTheCodePageFromTheDeclaration)
{
    const struct {
        const char* declaration;
        std::uint32_t code_page;
    } encodings[] = {
        {R"(<?xml version="1.0" encoding="UTF-8"?>)", 65001},
        {R"(<?xml version="1.0"?>)", 65001},
        {R"(<?xml version="1.0" encoding = "shift_jis"?>)", 932},
        {R"(<?xml encoding="Shift-JIS" encoding="EUC-JP"?>)", 932},
        {R"(<?xml encoding="UTF-7" standalone="yes" ?>)", 65000},
    };
    for (const auto& row : encodings) {
        EXPECT_EQ(Read(std::string(row.declaration) + "<a>x</a>").GetCodePage(), row.code_page) << row.declaration;
    }
}

TEST(XmlReader, KeepsNamesAndTextsOfAnyLength)
{
    for (const std::size_t length : {247, 248, 70'000}) {
        const std::string name(length, 'n');
        const std::string text(length, 't');
        const std::string element = "<" + name + " " + name + "=\"" + text + "\"><a>" + text + "</a></" + name + ">";
        EXPECT_TRUE(ReadInPieces(std::string(declaration) + element, 61).shown == element) << length;
    }
}

std::string Nested(std::size_t depth)
{
    std::string text(declaration);
    for (std::size_t at = 0; at < depth; ++at) {
        text += "<a>";
    }
    for (std::size_t at = 0; at < depth; ++at) {
        text += "</a>";
    }
    return text;
}

TEST(XmlReader, RefusesWhatIsNestedTooDeep)
{
    EXPECT_EQ(Show(Read(Nested(xml_nesting_limit))), Nested(xml_nesting_limit).substr(declaration.size()));
    EXPECT_TRUE(Read(Nested(xml_nesting_limit + 1) + "<R/>").IsEmpty());
    EXPECT_TRUE(Read(Nested(1'000'000)).IsEmpty());
}

TEST(XmlReader, RoundTripsShiftJisByteForByte)
{
    // The second bytes of these characters are delimiters and letters of ASCII.
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"Shift-JIS\"?><\x95\x94\x95i \x83\x5C=\"\x8B\x40\x94\x5C\">"
        "<a>\x83\x5C\x83\x7C\x83\x7B</a></\x95\x94\x95i>";
    EXPECT_EQ(Write(Read(text)), text);
}

std::chrono::nanoseconds TimeToRead(std::string_view text)
{
    const auto start = std::chrono::steady_clock::now();
    Read(text);
    return std::chrono::steady_clock::now() - start;
}

// A faulty document must not be dearer than a good one. The machine may be busy, so a slow read gets more chances.
TEST(XmlReader, ReadsADocumentThatIsCutOrSpoiltAnywhere)
{
    std::string text(declaration);
    text += "<R>\n<!-- c -->";
    for (int at = 0; at < 30; ++at) {
        text += "<part id=\"" + std::to_string(at) + "\" x = \"\"><name>a &lt; b</name><e/><!--d--><n>-1</n></part>\n";
    }
    text += "</R>";
    const auto limit = 20 * TimeToRead(text) + std::chrono::milliseconds(1);
    const auto expect_quick = [&](const std::string& bad) {
        int chances = 5;
        while (TimeToRead(bad) > limit && chances != 0) {
            --chances;
        }
        EXPECT_NE(chances, 0) << bad;
    };
    for (std::size_t at = 0; at < text.size(); ++at) {
        expect_quick(text.substr(0, at));
        std::string spoilt = text;
        for (const char byte : {static_cast<char>(~text[at]), static_cast<char>(text[at] ^ 1), '"', '<', '\0'}) {
            spoilt[at] = byte;
            expect_quick(spoilt);
        }
    }
}

} // namespace
