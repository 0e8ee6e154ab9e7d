#include <gtest/gtest.h>

#include <sstream>

#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

TEST(XmlWriter, BreaksAndIndentsLinesByDepth)
{
    CXmlElement root("r", 65001);
    root.AddAttribute("x", CXmlString("1"));
    CXmlElement child = root.AppendChild(CXmlElement("c", 65001));
    child.AddChild("leaf", true);
    child.AppendChild(TextLeaf("text", ""));
    root.AppendChild(CXmlElement("e", 65001)).AddAttribute("y", CXmlString("a<b"));
    CXmlDocument document;
    document = root;
    std::ostringstream stream;
    ASSERT_TRUE(WriteXml(stream, document));
    EXPECT_EQ(stream.str(), std::string(declaration) +
                                "\n<r x=\"1\">\n  <c>\n    <leaf>true</leaf>\n    <text></text>\n"
                                "  </c>\n  <e y=\"a<b\"/>\n</r>");
    EXPECT_EQ(Write(CXmlElement("a", 65001), 1), std::string(declaration) + "\n<a/>");
    document.indent = 100;
    stream.str("");
    ASSERT_TRUE(WriteXml(stream, document));
    EXPECT_NE(stream.str().find("\n" + std::string(200, ' ') + "<leaf>"), std::string::npos);
}

TEST(XmlWriter, NamesTheCodePageAndWritesBytesAsTheyAre)
{
    const std::string bytes = "\x95\x94<&\"]";
    EXPECT_EQ(Write(TextLeaf("a", bytes, 932)), "<?xml version=\"1.0\" encoding=\"Shift-JIS\"?><a>" + bytes + "</a>");
    EXPECT_EQ(Write(CXmlElement("a", 1252)), "<?xml version=\"1.0\" encoding=\"\"?><a/>");
    EXPECT_EQ(Show(TextLeaf("a", {"b\0c", 3})), "<a>b</a>") << "up to the NUL";
    const std::string longer(100'000, 'x');
    EXPECT_EQ(Show(TextLeaf("a", longer)), "<a>" + longer + "</a>");
}

TEST(XmlWriter, RefusesAFailedStreamAndAnEmptyDocument)
{
    CXmlDocument document;
    std::ostringstream stream;
    EXPECT_FALSE(WriteXml(stream, document));
    document = CXmlElement("a", 65001);
    stream.setstate(std::ios_base::failbit);
    EXPECT_FALSE(WriteXml(stream, document));
    stream.clear();
    EXPECT_EQ(stream.str(), "");
}

} // namespace
