#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "xml_test_support.h"

using namespace partkeep;
using namespace std::string_literals;
using namespace xml_test;

extern "C" int FuzzXmlParse(const unsigned char* data, std::size_t size);
extern "C" int FuzzXmlReaderModel(const unsigned char* data, std::size_t size);

namespace {

// What stands between other elements, by what it should have been, and what it leaves of itself there.
const std::tuple<const char*, std::string, std::string> pieces[] = {
    {"empty element", "<b/>", "<b/>"},
    {"empty element, a blank for the end", "<b /\n>", "<b/>"},
    {"empty element, two slashes", "<b//>", "<b/>"},
    {"empty element, something behind the slash", "<b/ x=\"1\">", "<b/>"},
    {"empty element, the bracket missing", "<b/<c/>", "<b/>"},
    {"start tag, blanks behind the name", "<b >t</b\n\t>", "<b>t</b>"},
    {"start tag, no name", "<>", ""},
    {"start tag, a blank for a name", "< b/>", ""},
    {"start tag, a NUL for a name", "<\0b/>"s, ""},
    {"start tag, a NUL within the name", "<b\0c/>"s, "<b/>"},
    {"start tag, another bracket", "<<b/>", "<<b/>"},
    {"start tag, a bracket at the name's end", "<b<>t</b<>", "<b<>t</b<>"},
    {"start tag, signs in the name", R"(<b="'&/>)", R"(<b="'&/>)"},
    {"start tag, of a declaration", "<?b?/>", "<?b?/>"},
    {"start tag, the byte 0xFF", "\xFF<\xFF/>", "<\xFF/>"},
    {"start tag, a carriage return", "<b\r\n>t</b\r>", "<b\r>t</b\r>"},
    {"attributes, in order", R"(<b x = "1"y="2"/>)", R"(<b x="1" y="2"/>)"},
    {"attributes, on lines", "<b\n\tx=\"1\"\n\ty\n=\n\"2\"\n/>", R"(<b x="1" y="2"/>)"},
    {"attributes, many", "<b" + Times(40, " x=\"1\"") + "/>", "<b" + Times(40, " x=\"1\"") + "/>"},
    {"attribute, no value", R"(<b x=""/>)", R"(<b x=""/>)"},
    {"attribute, no name", R"(<b ="1"/>)", R"(<b ="1"/>)"},
    {"attribute, a NUL within the name", "<b x\0y=\"1\"/>"s, R"(<b x="1"/>)"},
    {"attribute, a NUL behind the name", "<b x\0\"1\" y=\"2\"/>"s, R"(<b x="2"/>)"},
    {"attribute, brackets in the name", R"(<b <>="1"/>)", R"(<b <>="1"/>)"},
    {"attribute, no sign", R"(<b x "1"/>)", R"(<b x="1"/>)"},
    {"attribute, two signs", R"(<b x=="1"/>)", R"(<b x="1"/>)"},
    {"attribute, something before the quote", R"(<b x=/>"1"/>)", R"(<b x="1"/>)"},
    {"attribute, single quotes to the next double ones", R"(<b x= "1" y='2' z="3"/>)", R"(<b x="1" y="3"/>)"},
    {"attribute, no quotes to the next ones", R"(<b x=1/><c y="2"/>)", R"(<b x="2"/>)"},
    {"attribute, delimiters in the value", "<b x=\"a>b</\n'=\"/>", "<b x=\"a>b</\n'=\"/>"},
    {"attribute, something behind it all", R"(<b x="1"/y>)", R"(<b x="1"/>)"},
    {"text", "<b>  a &amp; \"]]></b>", "<b>  a &amp; \"]]></b>"},
    {"text, none", "<b></b>", "<b></b>"},
    {"text, a NUL within", "<b>x\0y</b>"s, "<b>x</b>"},
    {"text, a carriage return", "\r\n<b>x\r\n</b>", "<b>x\r\n</b>"},
    {"text, beside attributes", R"(<b x="1">t</b>)", R"(<b x="1"/>)"},
    {"text, none beside attributes", R"(<b x="2"></b>)", R"(<b x="2"/>)"},
    {"text, beside children", "<b>t<c/>t<d/>t</b>t", "<b><c/><d/></b>"},
    {"text, a bracket alone", R"(<b x="1">><c/></b>)", R"(<b x="1"><c/></b>)"},
    {"text, before a comment", "<b>t<!-- c --></b>", "<b/>"},
    {"text, CDATA", "<b><![CDATA[<c/>]]></b>", "<b><![CDATA[<c/></b>"},
    {"end tag, another name", "<b>t</c>", ""},
    {"end tag, of an element inside", "<b><e/></c>", ""},
    {"end tag, more than the name", "<b>t</bc>", ""},
    {"end tag, less than the name", "<bc>t</b>", ""},
    {"end tag, another case", "<b>t</B>", ""},
    {"end tag, another end of a long name", "<" + Times(32, "b") + "q>t</" + Times(32, "b") + "r>", ""},
    {"end tag, no name", "<b>t</>", ""},
    {"end tag, a blank before the name", "<b>t</ b>", ""},
    {"end tag, two slashes", "<b>t<//b>", ""},
    {"end tag, the bracket missing", "<b>t</b<c/>", ""},
    {"end tag, a blank for the bracket", "<b>t</b <c/>", "<b>t</b>"},
    {"end tag, a NUL within the name", "<b>t</b\0c>"s, "<b>t</b>"},
    {"end tag, attributes", R"(<b>t</b x=">">)", "<b>t</b>"},
    {"seventeen bytes each", R"(<b1234567890123456 x="12345678901234567"/>)",
     R"(<b1234567890123456 x="12345678901234567"/>)"},
    {"names of sixteen bytes", "<b23456789012345q>t</b23456789012345q>", "<b23456789012345q>t</b23456789012345q>"},
    {"seventeen bytes of text", "<b>12345678901234567</b>", "<b>12345678901234567</b>"},
    {"comment", "<!-- <b/> \" / -->", ""},
    {"comment, dashes within", "<!-- c -- d -><b/> --->", ""},
    {"comment, one word", "<!--c-->", ""},
    {"comment, empty", "<!---->", ""},
    {"comment, one word with more behind", "<!--c-- d-->", ""},
    {"comment, a slash behind the dashes", "<!--/b-->", ""},
    {"comment, dashes of the opening alone", "<!--><b/>--><!---><b/>-->", ""},
    {"comment, one dash", "<!-b--/>", "<!-b--/>"},
};

const struct {
    const char* label;
    std::string text;
    std::string shown; // written again without line breaks, with a declaration or not; "-" when nothing is read
    bool declared = true;
} rows[] = {
    {"an end tag that is missing", "<a><b></a>", "-"},
    {"a slash that is missing", "<a><b>t<b></a>", "-"},
    {"the end within an element", "<a><b/>", "-"},
    {"the end within a name", "<a", "-"},
    {"the end within a value", "<R><!-- long enough to be read in one go --><a><b x=\"<", "-"},
    {"the end within an attribute's name", "<R><!-- long enough to be read in one go --><a><b x<", "-"},
    {"the end behind an attribute", "<R><!-- long enough to be read in one go --><a><b x=\"<\" ", "-"},
    {"one end tag more", "<R><b/></b><c/></R><S/>", "<c/>"},
    {"text against the declaration", "text<R/>", "-"},
    {"a comment that never ends", "<R><!-- x</R>", "-"},
    {"an end tag for a root", "</a><R/>", "<R/>"},
    {"an attribute without quotes", "<R><a x=1/><b/></R>", "-"},
    {"an attribute that does not end", "<R><a x=\"1/><b/></R>", "-"},
    {"an attribute of a name alone", "<R><a x/><b/></R>", "-"},
    {"single quotes", "<R x='1'/><S/>", "-"},
    {"a document type", "<!DOCTYPE R><R/>", "-"},
    {"no encoding", "<?xml version='1.0'?><a/>", Declared("<a/>"), false},
    {"an encoding", "<?xml encoding = \"shift_jis\"?><a/>", R"(<?xml version="1.0" encoding="Shift-JIS"?><a/>)", false},
    {"UTF-7", R"(<?xml encoding="UTF-7"?><R><a x="1"/><b>t</b></R>)",
     R"(<?xml version="1.0" encoding="UTF-7"?><R><a x="1"/><b>t</b></R>)", false},
    {"an encoding up to a NUL", "<?xml encoding=\"UTF-7\0x\"?><a/>"s, R"(<?xml version="1.0" encoding="UTF-7"?><a/>)",
     false},
    {"more than one", R"(<?xml encoding="UTF-7" encoding="utf-8" encoding="EUC-JP" ?><a/>)", Declared("<a/>"), false},
    {"a byte order mark", "\xEF\xBB\xBF<?xml version=\"1.0\"?><R><a/></R>", "<R><a/></R>", false},
    {"UTF-16, the low byte first", "\xFF\xFE<\0?\0x\0m\0l\0 \0?\0>\0<\0R\0/\0>\0"s, "-", false},
    {"UTF-16, the high byte first", "\xFE\xFF\0<\0?\0x\0m\0l\0 \0?\0>\0<\0R\0/\0>"s, "-", false},
    {"nothing", "", "-", false},
    {"no question mark", "<R/>", "-", false},
    {"an empty declaration", "<? ?><R/>", "<R/>", false},
    {"no space in the declaration", "<?xml?><R><a/></R>", "-", false},
    {"no space in the declaration, a lone bracket later", "<?xml?><R> <a/> > </R><S/>", "<S/>", false},
    {"a declaration that goes on", "<?xml x?>y><R/>\n><S/>", "<S/>", false},
    {"an encoding in single quotes", R"(<?xml encoding='UTF-8'?><R x="1"/><S/>)", "-", false},
    {"an encoding in single quotes, more quotes", "<?xml encoding='UTF-8'?><R x=\"1\"/>\n>\n<S/>", "<S/>", false},
};

void ExpectShown(const std::string& text, const std::string& shown)
{
    EXPECT_EQ(shown.starts_with("<?xml ") ? Write(Read(text)) : Show(Read(text)), shown) << text;
    // What is long enough is read in one go.
    for (const std::string& input : {text, text + Times(64, " "), text + Times(64, "<")}) {
        FuzzXmlReaderModel(reinterpret_cast<const unsigned char*>(input.data()), input.size());
    }
}

// The same end in windows of any width, with a stream that throws, and, but for failure, with no memory.
void ReadInNeed(const std::string& text)
{
    for (int width = 0; width < 20; ++width) {
        for (int allocation = 0; allocation < 30; ++allocation) {
            const std::string input = static_cast<char>(width) + text + static_cast<char>(allocation);
            FuzzXmlParse(reinterpret_cast<const unsigned char*>(input.data()), input.size());
        }
    }
}

TEST(XmlReader, TakesEveryInputToItsOutcome)
{
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const std::string text = row.declared ? Declared(row.text) : row.text;
        ExpectShown(text, row.shown);
        ReadInNeed(text);
    }
}

TEST(XmlReader, LosesOfAMalformedPieceNoMoreThanThat)
{
    for (const auto& [production, text, left] : pieces) {
        SCOPED_TRACE(production);
        for (const auto& [before, behind] : std::initializer_list<std::pair<std::string, std::string>>{
                 {"<R><a/>", "<z/></R>"}, {R"(<R q="1">)", "<z/></R>"}, {"<R><d><a/>", "</d>~<z/></R>"}}) {
            for (const int times : {1, 5}) {
                std::string shown = Declared(before).append(Times(times, left)).append(behind);
                std::erase(shown, '~');
                ExpectShown(Declared(before).append(Times(times, text)).append(behind), shown);
            }
        }
        ExpectShown(Declared("\n" + text + "<z/>"),
                    left.empty() ? "<z/>" : left); // no row leaves more than one element
        ReadInNeed(Declared("<R>" + text + "<z/></R>"));
    }
}

TEST(XmlReader, LeavesTheStreamBehindTheRootAndTheDocumentAsItWasWhenThatFails)
{
    std::istringstream stream(Declared("<R/> x <S/>"));
    CXmlDocument document;
    std::string rest;
    EXPECT_TRUE(ReadXml(stream, document));
    EXPECT_TRUE(std::getline(stream, rest));
    EXPECT_EQ(rest, "S/>");
    stream.clear();
    stream.str(Declared("<a x=\"1\"><b>"));
    stream.exceptions(std::ios_base::eofbit);
    EXPECT_THROW(ReadXml(stream, document), std::ios_base::failure) << "when the read is over";
    stream.exceptions(std::ios_base::goodbit);
    stream.str(Declared("<S/>"));
    stream.clear(std::ios_base::failbit);
    EXPECT_FALSE(ReadXml(stream, document));
    EXPECT_EQ(Show(document), "<R/>");
}

// Without a window. At "~" it ends for once, "!" can be seen, but not taken, and "^" not even seen.
class CDevice : public std::streambuf {
public:
    explicit CDevice(const char* text) : at_(text) {}

protected:
    int_type underflow() override
    {
        return *at_ == '^'   ? throw std::bad_alloc()
               : *at_ == '~' ? (++at_, traits_type::eof())
                             : traits_type::to_int_type(*at_);
    }
    int_type uflow() override { return *at_ == '!' ? throw std::bad_alloc() : traits_type::to_int_type(*at_++); }

private:
    const char* at_;
};

TEST(XmlReader, TakesAnEndOrAFailureOfItsStreamForTheLastThatComes)
{
    for (const auto& [text, bad] :
         {std::pair("<? ?><R><a/>~</R>", false), std::pair("<? ?><R>!</R>", true), std::pair("<? ?><R>^</R>", true)}) {
        CDevice device(text);
        std::istream stream(&device);
        CXmlDocument document;
        EXPECT_FALSE(ReadXml(stream, document)) << text;
        EXPECT_EQ(stream.bad(), bad) << text;
        EXPECT_TRUE(stream.eof()) << text;
    }
}

TEST(XmlReader, RefusesWhatIsNestedTooDeep)
{
    constexpr int limit = xml_nesting_limit;
    for (const int depth : {limit, limit + 1, 1'000'000}) {
        const std::string nested = Times(depth, "<a>") + Times(depth, "</a>");
        const std::string limited = Declared(nested);
        FuzzXmlReaderModel(reinterpret_cast<const unsigned char*>(limited.data()), limited.size());
        EXPECT_TRUE(Show(Read(Declared(nested + "<R/>"))) == (depth > limit ? "-" : nested)) << depth;
    }
}

// A faulty document must not be dearer than a good one. The machine may be busy, so the best of some times counts.
TEST(XmlReader, ReadsADocumentThatIsCutOrSpoiltAnywhere)
{
    using Clock = std::chrono::steady_clock;
    const auto time_to_read = [](const std::string& text, Clock::duration enough) {
        Clock::duration best = Clock::duration::max();
        for (int tries = 0; tries < 5 && best > enough; ++tries) {
            const auto start = Clock::now();
            Read(text);
            best = std::min(best, Clock::now() - start);
        }
        return best;
    };
    const std::string part = "<part id=\"#\" x = \"\"><name>a &lt; b</name><e/><!--d--><n>-1</n></part>\n";
    const std::string text = Declared("<R>\n<!-- c -->" + Times(30, part) + "</R>");
    for (int width = 0; width < 256; ++width) {
        const std::string input = static_cast<char>(width) + text + static_cast<char>(width);
        FuzzXmlParse(reinterpret_cast<const unsigned char*>(input.data()), input.size());
    }
    const auto limit = 20 * time_to_read(text, {}) + std::chrono::milliseconds(1);
    for (std::size_t at = 0; at < text.size(); ++at) {
        EXPECT_LE(time_to_read(text.substr(0, at), limit), limit) << "cut at " << at;
        FuzzXmlReaderModel(reinterpret_cast<const unsigned char*>(text.data()), at);
        std::string spoilt = text;
        for (const char byte : {static_cast<char>(~text[at]), static_cast<char>(text[at] ^ 1), '"', '<', '\0'}) {
            spoilt[at] = byte;
            EXPECT_LE(time_to_read(spoilt, limit), limit) << spoilt;
            FuzzXmlReaderModel(reinterpret_cast<const unsigned char*>(spoilt.data()), spoilt.size());
        }
    }
}

} // namespace
