#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "xml/xml_memory.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

extern "C" int FuzzXmlOperations(const unsigned char* data, std::size_t size);

namespace {

// An array leaf with two items in extension cells behind those in it.
CXmlElement ArrayOf(XmlKind item_kind, const std::string& inline_items, const std::string& item_in_cells)
{
    std::byte* next = nullptr;
    for (int cells = 0; cells < 2; ++cells) {
        auto* cell = static_cast<std::byte*>(AllocateXml(item_in_cells.size() + xml_address_width, 1));
        PutField(PutBytes(cell, item_in_cells), std::exchange(next, cell));
    }
    std::string value(4 + inline_items.size() + xml_address_width, '\0');
    std::byte* at = reinterpret_cast<std::byte*>(value.data());
    at = PutField(at, static_cast<std::uint32_t>(value.size() - 4));
    PutField(PutBytes(at, inline_items), next);
    const auto array_kind = static_cast<XmlKind>(-static_cast<int>(item_kind));
    return CXmlElement(MakeFixedBlock("list", array_kind, value, 65001));
}

TEST(XmlStore, PacksBlocksByteForByteForAddressesOfFourBytes)
{
    using namespace std::string_literals;
    std::string block(56, ' ');
    auto* bytes = reinterpret_cast<std::byte*>(block.data());
    const std::string names = "\0\0\xFF\n\0\0\0\2\0\0\0ab\0\0\0\0"s;
    PackElement<4>(bytes, "ab", 65001);
    EXPECT_EQ(block, "\x1F\0\0\0\0\xE9\xFD\0\0\0\0\0\0\1\0\0\x0F\0\0\0\0\0\0\4\0\0\0"s + std::string(12, '\0') + names);
    block.resize(XmlLayout<4>::TextLeafSize(2, 3));
    PackTextLeaf<4>(bytes, "ab", "xyz", 932);
    EXPECT_EQ(block, "\x1F\0\0\0\0\xA4\3\0\0\0\0\0\0\1\0\1\3\0\0\0xyz\0\0\0\0"s + names);
    block.resize(XmlLayout<4>::FixedLeafSize(2, 2));
    PackFixedLeaf<4>(bytes, "ab", XmlKind::signed_16, "\xFE\xFF", 932);
    EXPECT_EQ(block, "\x1F\0\0\0\0\xA4\3\0\0\0\0\0\0\1\0\6\xFE\xFF\0\0\0\0"s + names);
}

// Order, names, values, copies and lifetimes, against a tree of ordinary vectors: the fuzz target on random bytes.
TEST(XmlStore, DoesAsAPlainModelDoes)
{
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        std::vector<unsigned char> bytes(1600);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random() >> 8); });
        ASSERT_EQ(FuzzXmlOperations(bytes.data(), bytes.size()), 0);
    }
}

TEST(XmlStore, CountsHandlesAndTheLink)
{
    CXmlElement root("r", 65001);
    CXmlElement child = root.AddChild("c", true);
    EXPECT_EQ(References(root.Block()), 1U);
    EXPECT_EQ(References(child.Block()), 2U);
    EXPECT_EQ(OwnerOf(child.Block()), LastSlotOf(root.Node()));
    CXmlDocument document;
    document.indent = 4;
    document = child;
    document = CXmlElement(child);
    EXPECT_EQ(document.indent, 4);
    const CXmlIterator it = root.Begin();
    EXPECT_EQ(References(root.Block()), 1U) << "an iterator holds no block";
    EXPECT_EQ(References(child.Block()), 3U);
    root = CXmlElement();
    EXPECT_EQ(References(child.Block()), 2U);
    EXPECT_EQ(OwnerOf(child.Block()), nullptr) << "free-standing again";
}

TEST(XmlStore, ANameStaysReadableWhileAnIteratorLives)
{
    for (const bool compact : {false, true}) {
        for (const bool end : {false, true}) {
            CXmlElement element("name", 65001);
            element.AddChild("c", true);
            {
                CXmlElement outer("outer", 65001);
                outer.AppendChild(compact ? CXmlElement() : CXmlElement("c", 65001));
                CXmlElement copied = outer.AppendChild(element);
                element = compact ? outer.AppendChild(copied) : copied;
            }
            const CXmlIterator it = end ? element.End() : element.Begin();
            const char* name = element.GetName();
            element = CXmlElement();
            EXPECT_STREQ(name, "name");
        }
    }
}

TEST(XmlStore, PassesOverSkippedNodesWhereverTheyStand)
{
    for (const std::string skipped : {"a", "b", "d", "ab", "cd", "abcd"}) {
        const CXmlElement root = Read(Declared("<r><a></a><b></b><c></c><d></d></r>"));
        CXmlElement parent("p", 65001);
        parent.AppendChild(root);
        for (const CXmlElement& tree : {root, parent.AppendChild(root)}) { // in chains, and inline
            std::string left;
            for (CXmlIterator it = tree.Begin(); it != tree.End(); it++) {
                const CXmlElement child = *it;
                const bool skips = skipped.find(child.GetName()) != std::string::npos;
                left += skips ? "" : Show(child);
                PutField(child.Node(), skips ? xml_skipped_id : NodeId(child.Node()));
            }
            EXPECT_EQ(Show(tree), left.empty() ? "<r/>" : "<r>" + left + "</r>") << skipped;
            EXPECT_EQ(Show(CXmlElement("p", 65001).AppendChild(tree)), Show(tree)) << skipped;
        }
    }
}

TEST(XmlStore, AppendingAndReleasingManyOrDeepNodesTakesLinearTimeAndNoStack)
{
    constexpr int count = 200'000;
    CXmlElement wide("w", 65001);
    CXmlElement deep("d", 65001);
    CXmlElement bottom = deep;
    for (int at = 0; at < count; ++at) {
        wide.AddChild("c", std::int16_t{1});
        wide.AddAttribute("a", CXmlString("1"));
        bottom = bottom.AppendChild(CXmlElement("d", 65001));
    }
    // A handle that did not append before finds the end, too.
    wide.GetAttributes().AddChild("last", true);
    wide.AddAttribute("behind", CXmlString("1"));
    const std::string text = Show(wide);
    EXPECT_EQ(text.substr(text.find(" last"), 26), R"( last="true" behind="1"><c)");
    EXPECT_EQ(Show(deep).size(), std::size_t{count} * 7 + 4);
    EXPECT_EQ(Show(wide.AppendChild(Child(deep, 0))).size(), std::size_t{count} * 7 - 3) << "a copy";
}

TEST(XmlStore, CarriesArraysWithExtensionCells)
{
    const struct {
        XmlKind kind;
        std::string inline_items;
        std::string item_in_cells;
        const char* text;
    } rows[] = {
        {XmlKind::text, std::string("\1\0\0\0x\0\0\0\0", 9), std::string("\2\0\0\0yz", 6), "x  yz yz"},
        {XmlKind::boolean, std::string("\0\1", 2), "\2", "false true true true"},
        {XmlKind::signed_16, "\xFF\xFF\1\1", std::string("\2\0", 2), "-1 257 2 2"},
    };
    for (const auto& row : rows) {
        CXmlElement root("r", 65001);
        CXmlElement array = root.AppendChild(ArrayOf(row.kind, row.inline_items, row.item_in_cells));
        EXPECT_EQ(array.AsBool().has + array.AsShort().has + array.AsString().has, 0);
        EXPECT_EQ(array.AsStringList().value.Size(), 4U);
        EXPECT_TRUE(array.Begin() == array.End());
        const CXmlElement copy = root.AppendChild(array);
        EXPECT_EQ(LoadField<std::byte*>(LastSlotOf(copy.Node())), nullptr) << "all items inline";
        const std::string shown = std::string("<list>") + row.text + "</list>";
        EXPECT_EQ(Show(root), "<r>" + shown + shown + "</r>");
    }
}

TEST(XmlString, SharesItsCellByCount)
{
    EXPECT_EQ(CXmlString().Length(), 0U);
    EXPECT_TRUE(CXmlString(nullptr).IsNull());
    CXmlString text("abc\0d", 5);
    EXPECT_EQ(text.Length(), 5U);
    EXPECT_EQ(CXmlString("abc\0d").Length(), 3U);
    const CXmlString copy = text;
    EXPECT_EQ(copy.Text(), text.Text());
    EXPECT_EQ(text.References(), 2U);
    text = CXmlString();
    EXPECT_EQ(copy.References(), 1U);
}

TEST(XmlVector, DoublesFromOne)
{
    CXmlVector<CXmlString> list;
    for (const std::size_t capacity : {1, 2, 4, 4, 8}) {
        EXPECT_TRUE(list.Add(CXmlString(std::to_string(list.Size()))));
        EXPECT_EQ(list.Capacity(), capacity);
    }
    EXPECT_EQ(list[4].View(), "4");
}

} // namespace
