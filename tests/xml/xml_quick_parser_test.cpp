// How far the quick way through a document goes: what it leaves comes out the same, only later, and nobody would
// notice.
#include "xml/xml_quick_parser.h"

#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

// Of what stands in an element and ends with "<", up to which place.
std::size_t TakenOf(const std::string& content)
{
    const std::string text = content + "?" + std::string(xml_marks_width, ' ');
    const CXmlMould mould(65001);
    XmlOpenElements open;
    std::byte* const outer = MakeElementBlock("outer", 65001);
    EXPECT_TRUE(open.Add({outer, LastSlotOf(RootOf(outer))}));
    const char* const end = text.data() + text.size();
    const char* const at = TakeUsualElements({text.data(), text.data(), end}, mould, open);
    for (const XmlOpenElement& element : open) {
        DestroyBlock(element.block);
    }
    return static_cast<std::size_t>(at - text.data());
}

TEST(XmlQuickParser, TakesAllThatIsUsual)
{
    const std::string long_text(200, 'x');
    const std::string most = Times(32, " a#=\"v#\"");
    const std::string all[] = {
        "a>1</a><",
        "a></a><b>22</b>\n  <",
        "a>" + long_text + "</a><b>2</b><",
        long_text + ">1</" + long_text + "><b>2</b><",
        "o>\n <a>1</a>\n <p><q>2</q></p>\n</o>\n<b>3</b><",
        "a/><b/>\n<",
        "a x=\"1\"/><b>2</b><",
        "a x=\"" + long_text + "\" y=\"\"\n z=\"3\">text</a><b>2</b><",
        "a" + most + "/><b" + most + ">\n<c>1</c></b><",
    };
    for (const std::string& content : all) {
        EXPECT_EQ(TakenOf(content), content.size()) << content;
    }
    for (std::size_t length = 0; length < 200; ++length) {
        const std::string content = "a>" + std::string(length, 'x') + "</a><b>2</b><";
        EXPECT_EQ(TakenOf(content), content.size()) << content;
    }
    for (const std::string content : {"!-- c --><", "a x='1'/><", "a>1</b><", "a>1</a", ">1</><"}) {
        EXPECT_EQ(TakenOf(content), 0U) << content;
    }
    EXPECT_EQ(TakenOf("a" + most + " x=\"1\"/><"), 0U);
    EXPECT_EQ(TakenOf("a>1</a></outer><"), std::string("a>1</a><").size()) << "the last end of all";
}

} // namespace
