#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

extern "C" int FuzzXmlParse(const unsigned char* data, std::size_t size);
extern "C" int FuzzXmlReaderModel(const unsigned char* data, std::size_t size);

namespace {

std::string Times(int count, const std::string& text)
{
    return count == 0 ? "" : text + Times(count - 1, text);
}

const struct {
    const char* label;
    std::string text;
    std::string shown; // written again without line breaks, with a declaration or not; "-" when nothing is read
    bool declared = true;
} rows[] = {
    {"an empty element", "<R/>", "<R/>"},
    {"an empty leaf", "<R></R>", "<R></R>"},
    {"blanks behind names", "<R >x</R >", "<R>x</R>"},
    {"blanks behind names inside", "<R><b >x</b ><c\n>y</c></R>", "<R><b>x</b><c>y</c></R>"},
    {"a blank behind the slash", "<R/ >", "<R/>"},
    {"attributes in order", R"(<R x = "1"y="2"/>)", R"(<R x="1" y="2"/>)"},
    {"more or less than a sign before a quote", R"(<R><a x= "1" y='2' z="3"/></R>)", R"(<R><a x="1" y="3"/></R>)"},
    {"many attributes", "<R><a" + Times(40, " x=\"1\"") + "/></R>", "<R><a" + Times(40, " x=\"1\"") + "/></R>"},
    {"seventeen bytes", "<R><abcdefghijklmnopq x=\"12345678901234567\"/><c>abcdefghijklmnopq</c></R>",
     "<R><abcdefghijklmnopq x=\"12345678901234567\"/><c>abcdefghijklmnopq</c></R>"},
    {"attributes on lines", "<R\n\tx=\"1\"\n\ty\n=\n\"2\"\n/>", R"(<R x="1" y="2"/>)"},
    {"delimiters in a value", "<R x=\"a>b</\n'\"/>", "<R x=\"a>b</\n'\"/>"},
    {"text beside attributes", R"(<R><a x="1">t</a><a x="2"></a></R>)", R"(<R><a x="1"/><a x="2"/></R>)"},
    {"text beside children", "<R>t<b/>t<c/></R>", "<R><b/><c/></R>"},
    {"text before a comment", "<R>t<!-- c --></R>", "<R/>"},
    {"blanks are text", "<R>  a  </R>", "<R>  a  </R>"},
    {"entities stay", "<R>a &amp; b</R>", "<R>a &amp; b</R>"},
    {"a wrong end tag inside", "<R><b>x</c><d/></R>", "<R><d/></R>"},
    {"a wrong end tag of an element inside", "<R><b><e/></c><d/></R>", "<R><d/></R>"},
    {"a wrong end tag of the root", "<a></b><c></c>", "<c></c>"},
    {"an end tag that is missing", "<a><b></a>", "-"},
    {"the end within an element", "<a><b/>", "-"},
    {"the end within a name", "<a", "-"},
    {"text before the root", "\ntext<R/>", "<R/>"},
    {"text against the declaration", "text<R/>", "-"},
    {"comments", "<!-- <S/> --><R><!-- c -- d --><a/><!-- c ---></R>", "<R><a/></R>"},
    {"a comment of one word", "<!--c--><R><!--d--><a/><!----></R>", "<R><a/></R>"},
    {"one word with more behind", "<R><!--c-- d--><a/></R>", "<R><a/></R>"},
    {"dashes of the opening alone", "<R><!--><b/>--><a/></R>", "<R><a/></R>"},
    {"a comment that never ends", "<R><!-- x</R>", "-"},
    {"a blank and nothing for a name", "<><R>< /><a/><></R>", "<R><a/></R>"},
    {"a NUL for a name", std::string("<\0a/><R/>", 9), "<R/>"},
    {"a NUL within names and text", std::string("<a\0b>x\0y</a\0c>", 14), "<a>x</a>"},
    {"a NUL within an attribute's name", std::string("<R><a x\0y=\"1\"/></R>", 19), R"(<R><a x="1"/></R>)"},
    {"an end tag for a root", "</a><R/>", "<R/>"},
    {"an attribute without quotes", "<R><a x=1/><b/></R>", "-"},
    {"an attribute without quotes, quotes later", R"(<R><a x=1/><b y="2"/></R>)", R"(<R><a x="2"/></R>)"},
    {"single quotes", "<R x='1'/><S/>", "-"},
    {"a nameless attribute", R"(<R ="1"/>)", R"(<R ="1"/>)"},
    {"the byte 0xFF", "<R>\xFF<\xFF/></R>", "<R><\xFF/></R>"},
    {"carriage returns are text", "<R>\r\n<a>x\r\n</a>\r\n</R>", "<R><a>x\r\n</a></R>"},
    {"a carriage return in a tag", "<R\r\n></R\r>", "<R\r></R\r>"},
    {"CDATA", "<R><![CDATA[<a/>]]></R>", "<R><![CDATA[<a/></R>"},
    {"no encoding", "<?xml version='1.0'?><a/>", Declared("<a/>"), false},
    {"an encoding", "<?xml encoding = \"shift_jis\"?><a/>", R"(<?xml version="1.0" encoding="Shift-JIS"?><a/>)", false},
    {"UTF-7", R"(<?xml encoding="UTF-7"?><R><a x="1"/><b>t</b></R>)",
     R"(<?xml version="1.0" encoding="UTF-7"?><R><a x="1"/><b>t</b></R>)", false},
    {"an encoding up to a NUL", std::string("<?xml encoding=\"UTF-7\0x\"?><a/>", 30),
     R"(<?xml version="1.0" encoding="UTF-7"?><a/>)", false},
    {"more than one", R"(<?xml encoding="UTF-7" encoding="utf-8" encoding="EUC-JP" ?><a/>)", Declared("<a/>"), false},
    {"nothing", "", "-", false},
    {"no question mark", "<R/>", "-", false},
    {"an empty declaration", "<? ?><R/>", "<R/>", false},
    {"no space in the declaration", "<?xml?><R><a/></R>", "-", false},
    {"no space in the declaration, a lone bracket later", "<?xml?><R> <a/> > </R><S/>", "<S/>", false},
    {"a declaration that goes on", "<?xml x?>y><R/>\n><S/>", "<S/>", false},
    {"an encoding in single quotes", R"(<?xml encoding='UTF-8'?><R x="1"/><S/>)", "-", false},
    {"an encoding in single quotes, more quotes", "<?xml encoding='UTF-8'?><R x=\"1\"/>\n>\n<S/>", "<S/>", false},
};

TEST(XmlReader, TakesEveryInputToItsOutcome)
{
    for (const auto& row : rows) {
        const std::string text = row.declared ? Declared(row.text) : row.text;
        EXPECT_EQ(row.shown.starts_with("<?") ? Write(Read(text)) : Show(Read(text)), row.shown) << row.label;
        // What is long enough is read in one go.
        for (const std::string& input : {text, text + Times(64, " "), text + Times(64, "<")}) {
            FuzzXmlReaderModel(reinterpret_cast<const unsigned char*>(input.data()), input.size());
        }
        // The same end in windows of any width, with a stream that throws, and, but for failure, with no memory.
        for (int width = 0; width < 20; ++width) {
            for (int allocation = 0; allocation < 30; ++allocation) {
                const std::string input = static_cast<char>(width) + text + static_cast<char>(allocation);
                FuzzXmlParse(reinterpret_cast<const unsigned char*>(input.data()), input.size());
            }
        }
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

TEST(XmlReader, RefusesWhatIsNestedTooDeep)
{
    for (const std::size_t depth : {xml_nesting_limit, xml_nesting_limit + 1, std::size_t{1'000'000}}) {
        std::string nested;
        for (std::size_t at = 0; at < 2 * depth; ++at) {
            nested += at < depth ? "<a>" : "</a>";
        }
        const std::string limited = Declared(nested);
        FuzzXmlReaderModel(reinterpret_cast<const unsigned char*>(limited.data()), limited.size());
        EXPECT_TRUE(Show(Read(Declared(nested + "<R/>"))) == (depth > xml_nesting_limit ? "-" : nested)) << depth;
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
    std::string text = Declared("<R>\n<!-- c -->");
    for (int at = 0; at < 30; ++at) {
        text += "<part id=\"" + std::to_string(at) + "\" x = \"\"><name>a &lt; b</name><e/><!--d--><n>-1</n></part>\n";
    }
    text += "</R>";
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
