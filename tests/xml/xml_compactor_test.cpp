#include <gtest/gtest.h>

#include "xml/xml_compactor.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

// Linked throughout, with names that come again, and one child compact so that chains stand between inline nodes.
CXmlElement Sample()
{
    CXmlElement root("r", 65001);
    root.AddAttribute("x", CXmlString("1"));
    root.AddAttribute("y", CXmlString("ü"));
    root.AddChild("a", true);
    CXmlElement inner = root.AppendChild(CXmlElement("r", 65001));
    inner.AppendChild(TextLeaf("x", "部品"));
    CXmlElement copied = root.AppendChild(inner);
    copied.AddChild("late", std::int16_t{5});
    copied.AddAttribute("z", CXmlString(""));
    Child(copied, 0); // inline by now
    root.AddChild("a", std::int16_t{-2});
    return root;
}

CXmlElement Compact(const CXmlElement& element, std::uint32_t code_page = 65001)
{
    return CXmlElement(CompactXml(element.Node(), element.Block(), code_page));
}

TEST(XmlCompactor, PutsEverythingInlineUnderOneNameArray)
{
    const CXmlElement source = Sample();
    const std::string shown = Show(source);
    CXmlElement copy = Compact(source);
    EXPECT_EQ(shown,
              "<r x=\"1\" y=\"ü\"><a>true</a><r><x>部品</x></r><r z=\"\"><x>部品</x><late>5</late></r><a>-2</a></r>");
    EXPECT_EQ(Show(copy), shown);
    EXPECT_EQ(Show(source), shown) << "the source is as it was";
    EXPECT_EQ(References(copy.Block()), 1U);
    EXPECT_EQ(OwnerOf(copy.Block()), nullptr);

    // A plain reading of the layout: sizes, ids in the order of first appearance, every link 0.
    const std::string zero(xml_address_width, '\0');
    const auto size = [](std::size_t value) { return std::string{static_cast<char>(value), 0, 0, 0}; };
    const auto text = [&](char id, std::string_view value) {
        return std::string{id, 0, 1} + size(value.size()) + std::string(value) + zero;
    };
    const auto element = [&](char id, const std::string& attributes, const std::string& children) {
        const std::string holder =
            std::string{0, 0, 0} + size(xml_address_width + attributes.size()) + zero + attributes;
        const std::string payload = holder + zero + children;
        return std::string{id, 0, 0} + size(payload.size()) + payload + zero;
    };
    const std::string part = text(2, "部品");
    const std::string expected = element(1, text(2, "1") + text(3, "ü"),
                                         std::string{4, 0, 2, 1} + zero + element(1, "", part) +
                                             element(1, text(5, ""), part + std::string{6, 0, 6, 5, 0} + zero) +
                                             std::string{4, 0, 6, '\xFE', '\xFF'} + zero);
    const std::string bytes = BytesOf(copy.Block());
    EXPECT_EQ(bytes.substr(XmlPlaces::root, expected.size()), expected);
    std::string names;
    for (const char* name : {"r", "x", "y", "a", "z", "late"}) {
        names += size(std::string(name).size()) + name;
    }
    const std::string array = std::string{0, 0, '\xFF'} + size(names.size() + zero.size()) + names + zero;
    EXPECT_EQ(bytes.substr(XmlPlaces::root + expected.size()), array);
    EXPECT_EQ(BytesOf(Compact(copy).Block()), bytes) << "compact already";
    EXPECT_EQ(BytesOf(Compact(source).Block()), bytes) << "and again";
}

TEST(XmlCompactor, TakesANodeWithoutItsSiblingsFromWhereverItStands)
{
    const CXmlElement compact = Compact(Sample());
    EXPECT_EQ(Show(Compact(Child(compact, 2))), "<r z=\"\"><x>部品</x><late>5</late></r>");
    EXPECT_EQ(Show(Compact(Child(compact, 0))), "<a>true</a>");
    EXPECT_EQ(Show(Compact(Child(Sample(), 1))), "<r><x>部品</x></r>");
    CXmlElement target("t", 65001);
    CXmlElement appended = target.AppendChild(Child(compact, 2));
    appended.AddChild("more", true);
    EXPECT_EQ(Show(target), "<t><r z=\"\"><x>部品</x><late>5</late><more>true</more></r></t>");
}

TEST(XmlCompactor, AHandleInACompactTreeKeepsTheWholeBlock)
{
    CXmlElement leaf = Child(Child(Compact(Sample()), 2), 1);
    EXPECT_STREQ(leaf.GetName(), "late");
    EXPECT_EQ(leaf.AsShort().value, 5);
}

TEST(XmlCompactor, TranscodesNamesAndTextsThereAndBack)
{
    CXmlElement root("部品", 65001);
    root.AddAttribute("ソ", CXmlString("能"));
    root.AddChild("n", std::int16_t{7});
    root.AppendChild(TextLeaf("t", "機能ソ"));
    const CXmlElement shift_jis = Compact(root, 932);
    EXPECT_EQ(shift_jis.GetCodePage(), 932U);
    EXPECT_EQ(Show(shift_jis),
              "<\x95\x94\x95i \x83\x5C=\"\x94\x5C\"><n>7</n><t>\x8B\x40\x94\x5C\x83\x5C</t></\x95\x94\x95i>");
    EXPECT_EQ(Show(Compact(shift_jis)), Show(root));
    EXPECT_EQ(Show(Compact(TextLeaf("t", "♞x"), 932)), "<t>?x</t>");
}

TEST(XmlCompactor, RefusesWhatHasNoCopy)
{
    EXPECT_TRUE(Compact(Sample(), 12345).IsEmpty()) << "no such code page";
    CXmlElement root("r", 65001);
    CXmlElement names = root.AppendChild(CXmlElement("n", 65001));
    for (std::uint32_t at = 1; at < xml_most_names; ++at) {
        names.AddChild(("n" + std::to_string(at)).c_str(), true);
    }
    EXPECT_FALSE(root.AppendChild(names).IsEmpty());
    const std::string before = Show(root);
    names.AddChild("one more", true);
    EXPECT_TRUE(root.AppendChild(names).IsEmpty());
    EXPECT_EQ(Show(root).size(), before.size() + std::string("<one more>true</one more>").size());
}

} // namespace
