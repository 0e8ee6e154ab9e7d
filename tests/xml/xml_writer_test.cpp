#include <gtest/gtest.h>

#include "xml/xml_compactor.h"
#include "xml/xml_room.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

TEST(XmlWriter, BreaksAndIndentsLinesByDepth)
{
    CXmlDocument document = Read(Declared("<r x=\"1\"><c><leaf>t</leaf><text></text></c><e y=\"a<b\"/></r>"));
    document.indent = 33;
    std::ostringstream stream;
    ASSERT_TRUE(WriteXml(stream, document));
    const std::string in(33, ' ');
    EXPECT_EQ(stream.str(), Declared("\n<r x=\"1\">\n" + in + "<c>\n" + in + in + "<leaf>t</leaf>\n" + in + in +
                                     "<text></text>\n" + in + "</c>\n" + in + "<e y=\"a<b\"/>\n</r>"));
}

TEST(XmlWriter, NamesTheCodePageAndWritesBytesAsTheyAre)
{
    EXPECT_EQ(Write(TextLeaf("a", "\x95\x94<&\"]", 932)),
              "<?xml version=\"1.0\" encoding=\"Shift-JIS\"?><a>\x95\x94<&\"]</a>");
    EXPECT_EQ(Write(CXmlElement("a", 1252)), "<?xml version=\"1.0\" encoding=\"\"?><a/>");
    const std::string longer(100'000, 'x');
    EXPECT_TRUE(Show(TextLeaf("a", longer)) == "<a>" + longer + "</a>");
    EXPECT_TRUE(Show(TextLeaf(longer.c_str(), "a")) == "<" + longer + ">a</" + longer + ">");
}

// The guess takes the place of a text that grows while it is written.
TEST(XmlWriter, GuessesWhatIsAboutAsLongAsTheText)
{
    const std::string parts = Times(1000, "<part id=\"#\"><name>a part of some name, and what it is</name></part>");
    const std::string text = "<R>" + parts + "<long>" + std::string(100'000, 'u') + "</long></R>"; // more than a page
    const CXmlDocument read = Read(Declared(text));
    const CXmlElement copy(CompactXml(read.Node(), read.Block(), 65001));
    for (std::byte* block : {read.Block(), copy.Block()}) {
        const std::size_t guess = GuessLengthOf(block);
        EXPECT_GT(guess, text.size() / 2);
        EXPECT_LT(guess, text.size() * 2);
    }
    EXPECT_EQ(GuessLengthOf(CXmlElement("made", 65001).Block()), 0U);
}

TEST(XmlWriter, WritesNothingOfWhatIsNoDocument)
{
    CXmlElement root("a", 65001);
    root.AddAttribute("x", CXmlString("1"));
    CXmlDocument document;
    std::ostringstream stream;
    EXPECT_FALSE(WriteXml(stream, document));
    document = root.GetAttributes();
    EXPECT_FALSE(WriteXml(stream, document));
    document = root;
    stream.setstate(std::ios_base::failbit);
    EXPECT_FALSE(WriteXml(stream, document));
    EXPECT_EQ(stream.str(), "");
}

} // namespace
