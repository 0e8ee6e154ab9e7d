#include <gtest/gtest.h>

#include "xml/xml_compactor.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

// Linked throughout, with names that come again, and one child compact so that chains stand between inline nodes.
CXmlElement Sample()
{
    CXmlElement root = Read(Declared("<r x=\"1\" y=\"ü\"/>"));
    root.AddChild("a", true);
    const CXmlElement inner = root.AppendChild(Read(Declared("<r><x>部品</x></r>")));
    CXmlElement copied = root.AppendChild(inner);
    copied.AddChild("late", std::int16_t{5});
    copied.AddAttribute("z", CXmlString(""));
    root.AddChild("a", std::int16_t{-2});
    return root;
}

CXmlElement Compact(const CXmlElement& element, std::uint32_t code_page = 65001)
{
    return CXmlElement(CompactXml(element.Node(), element.Block(), code_page));
}

std::string BytesOf(const CXmlElement& root)
{
    const std::byte* end = LinkOf(NameArrayOf(root.Block()));
    return {reinterpret_cast<const char*>(root.Block()), static_cast<std::size_t>(end - root.Block())};
}

const std::string zero(xml_address_width, '\0');

std::string TextNode(char id, std::string_view text)
{
    return std::string{id, 0, 1} + Counted(text) + zero;
}

std::string ElementNode(char id, const std::string& attributes, const std::string& children)
{
    return std::string{id, 0, 0} + Counted(std::string{0, 0, 0} + Counted(zero + attributes) + zero + children) + zero;
}

TEST(XmlCompactor, PutsEverythingInlineUnderOneNameArray)
{
    const CXmlElement source = Sample();
    const std::string shown =
        "<r x=\"1\" y=\"ü\"><a>true</a><r><x>部品</x></r><r z=\"\"><x>部品</x><late>5</late></r><a>-2</a></r>";
    const CXmlElement copy = Compact(source);
    EXPECT_EQ(Show(copy), shown);
    EXPECT_EQ(Show(source), shown) << "the source is as it was";

    // Ids in the order of first appearance, every link 0.
    const std::string part = TextNode(2, "部品");
    const std::string late = std::string{6, 0, 6, 5, 0} + zero;
    const std::string flag = std::string{4, 0, 2, 1} + zero;
    const std::string number = std::string{4, 0, 6, '\xFE', '\xFF'} + zero;
    const std::string children =
        flag + ElementNode(1, "", part) + ElementNode(1, TextNode(5, ""), part + late) + number;
    const std::string names =
        Counted("r") + Counted("x") + Counted("y") + Counted("a") + Counted("z") + Counted("late") + zero;
    const std::string root = ElementNode(1, TextNode(2, "1") + TextNode(3, "ü"), children);
    const std::string expected = root + std::string{0, 0, '\xFF'} + Counted(names);
    EXPECT_EQ(BytesOf(copy).substr(XmlPlaces::root), expected);
    EXPECT_EQ(BytesOf(Compact(Compact(source))), BytesOf(copy)) << "and again";
}

// Long pieces wait where they stand, what is around them where the copy itself may come to stand.
TEST(XmlCompactor, KeepsWhatStandsAroundLongPieces)
{
    const std::string same_place = "a long n" + std::string(233, 'x'); // as "a long n" has among the names seen last
    for (const std::size_t length : {10, 5'000, 9'000, 70'000}) {
        CXmlElement root("r", 65001);
        root.AppendChild(CXmlElement("t", std::string(length, 't'), 65001));
        for (int round = 0; round < 4; ++round) {
            for (const char* name : {"a long name", "a long name", "a long nome", same_place.c_str(), "a long n"}) {
                root.AddChild(name, round == 1);
            }
            const std::string shown = Show(root);
            root = Compact(Compact(root));
            ASSERT_EQ(Show(root), shown) << length << ' ' << round;
        }
    }
}

// The second bytes of some of these characters are delimiters and letters of ASCII.
TEST(XmlCompactor, TakesShiftJisToUtf8AndBackByteForByte)
{
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"Shift-JIS\"?><\x95\x94\x95i \x83\x5C=\"\x8B\x40\x94\x5C\">"
        "<a>\x83\x5C\x83\x7C\x83\x7B</a><n>7</n></\x95\x94\x95i>";
    CXmlDocument document = Read(text);
    EXPECT_EQ(Write(document), text);
    document = Read(text.substr(0, text.find("<n>")) + "</\x95\x94\x95i>");
    document.AddChild("n", std::int16_t{7});
    const CXmlElement utf8 = Compact(document);
    EXPECT_EQ(Write(utf8), Declared("<部品 ソ=\"機能\"><a>ソポボ</a><n>7</n></部品>"));
    EXPECT_EQ(Write(Compact(utf8, 932)), text);
}

TEST(XmlCompactor, KeepsANodeWhoseNameIsEmptyOrMissing)
{
    for (const std::uint16_t id : std::initializer_list<std::uint16_t>{0, 9}) {
        CXmlElement root = Read(Declared("<r =\"1\"/>"));
        root.AppendChild(TextLeaf("a", "2"));
        PutField((*root.Begin()).Node(), id);
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ(Show(root), "<r =\"1\"><>2</></r>") << id;
            root = Compact(root);
        }
    }
}

TEST(XmlCompactor, RefusesWhatHasNoCopy)
{
    EXPECT_TRUE(Compact(Sample(), 12345).IsEmpty()) << "no such code page";
    EXPECT_TRUE(Compact(CXmlElement("r", 12345)).IsEmpty());
    CXmlElement root("r", 65001);
    CXmlElement names = root.AppendChild(CXmlElement("n", 65001));
    for (std::uint32_t at = 1; at < xml_most_names; ++at) {
        names.AddChild(("name" + std::to_string(at)).c_str(), true);
    }
    EXPECT_TRUE(Show(root.AppendChild(names)) == Show(names)) << "the most that there can be, all in one bucket";
    names.AddChild("one more", true);
    const std::string before = Show(root);
    EXPECT_TRUE(root.AppendChild(names).IsEmpty());
    EXPECT_TRUE(Show(root) == before);
}

// Where its beginning was made, and the rest comes from elsewhere.
TEST(XmlCompactor, ACopyStandsAtAnEvenAddress)
{
    for (std::size_t length = 0; length < 24; ++length) {
        CXmlElement source(std::string(length / 2, 'n').c_str(), 65001);
        source.AppendChild(TextLeaf("t", std::string(length % 2 == 0 ? 20'000 : 70'000, 't')));
        const std::byte* const cursor = xml_cursor.at;
        const CXmlElement copy = Compact(source);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(copy.Block()) % 2, 0U) << length;
        EXPECT_TRUE(length % 2 == 0 || xml_cursor.at == cursor) << "more than a page leaves nothing behind";
    }
}

} // namespace
