#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "watched_memory.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

extern "C" int FuzzXmlOperations(const unsigned char* data, std::size_t size);

namespace {

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
    PackFixedLeaf<4>(bytes, "ab", XmlKind::Signed16, "\xFE\xFF", 932);
    EXPECT_EQ(block, "\x1F\0\0\0\0\xA4\3\0\0\0\0\0\0\1\0\6\xFE\xFF\0\0\0\0"s + names);
}

// Order, names, values, arrays, skipped nodes, copies and lifetimes, against a tree of ordinary vectors.
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

// A tree with room of its own goes at once, or in parts when something of it is kept or something has come to it.
TEST(XmlStore, LosesNothingOfATreeThatGoes)
{
    const std::size_t live = watched_memory::live_pieces;
    const std::string text = "<r><a x=\"1\"><b>t</b></a>" + Times(77, "<c y=\"2\"></c>") + "<c y=\"2\">" +
                             std::string(10'000, 'u') + "</c>" + Times(5000, "<c y=\"2\"></c>") + "</r>";
    for (int kept = 0; kept < 6; ++kept) {
        CXmlElement outer("outer", 65001);
        const bool compact = kept == 5;
        CXmlElement root = Read(Declared(text));
        root = compact ? outer.AppendChild(*outer.AppendChild(root).Begin()) : root;
        const CXmlElement child = kept == 1 ? *root.Begin() : CXmlElement();
        const CXmlIterator it = kept == 2 ? root.Begin() : CXmlIterator();
        const CXmlElement added = kept == 3 ? root.AddChild("n", true) : CXmlElement();
        const CXmlElement linked = kept == 4 ? outer.AppendChild(root) : CXmlElement();
        const std::string shown = Show(root);
        if (kept != 4) {
            root = CXmlElement();
        }
        outer = kept == 4 ? outer : CXmlElement();
        EXPECT_EQ(child.IsEmpty() ? "" : Show(child), kept == 1 ? "<a x=\"1\"><b>t</b></a>" : "");
        EXPECT_TRUE(kept != 3 || Show(added) == "<n>true</n>");
        EXPECT_TRUE(kept != 4 || Show(linked) == shown);
    }
    EXPECT_EQ(watched_memory::live_pieces, live);
}

TEST(XmlStore, CopiesWhatContainsTheParentEvenUnderASkippedNode)
{
    for (const bool compact : {false, true}) {
        CXmlElement above("a", 65001);
        CXmlElement skipped = above.AppendChild(Read(Declared("<x><z/></x>")));
        if (compact) {
            CXmlElement other("a", 65001);
            above = other.AppendChild(other.AppendChild(above));
            other = CXmlElement();
            skipped = *above.Begin();
        }
        CXmlElement parent = skipped.AppendChild(CXmlElement("y", 65001));
        PutField(skipped.Node(), xml_skipped_id);
        EXPECT_NE(parent.AppendChild(above).Node(), above.Node());
        EXPECT_TRUE(parent.AppendChild(skipped).IsEmpty());
        EXPECT_EQ(Show(parent) + Show(above), "<y><a/></y><a/>");
        CXmlElement apart("b", 65001);
        apart.AddChild("c", true);
        EXPECT_EQ(parent.AppendChild(apart).Node(), apart.Node()) << "which holds something else";
    }
}

TEST(XmlStore, TakesAndGivesNothingWhereNoElementIs)
{
    CXmlElement root("r", 65001);
    root.AddAttribute("x", CXmlString("1"));
    CXmlElement empty;
    CXmlElement leaf = TextLeaf("t", "1");
    CXmlElement holder = root.GetAttributes();
    for (CXmlElement* none : {&empty, &leaf, &holder}) {
        EXPECT_TRUE(none->AppendChild(CXmlElement("c", 65001)).IsEmpty());
        EXPECT_TRUE(none->AddAttribute("y", CXmlString("2")).IsEmpty());
        EXPECT_TRUE(none->GetAttributes().IsEmpty());
        EXPECT_EQ(none->TextView(), none == &leaf ? "1" : "");
        EXPECT_EQ(none->Begin() == none->End(), none != &holder);
        EXPECT_EQ(none->AsStringList().has, 0);
    }
    EXPECT_TRUE(root.AppendChild(empty).IsEmpty());
    EXPECT_TRUE(root.AppendChild(holder).IsEmpty());
    EXPECT_EQ(holder.GetName(), nullptr);
    EXPECT_FALSE(holder.AppendChild(TextLeaf("z", "3")).IsEmpty());
    EXPECT_EQ(Show(root) + Show(CXmlElement(nullptr, 65001)), "<r x=\"1\" z=\"3\"/></>");
}

TEST(XmlStore, ANameStaysReadableWhileAnIteratorLives)
{
    for (const bool compact : {false, true}) {
        CXmlElement outer("outer", 65001);
        CXmlElement element = outer.AppendChild(Read(Declared("<name><name/></name>")));
        element = compact ? outer.AppendChild(element) : element;
        outer = CXmlElement();
        const CXmlIterator it = element.Begin();
        const char* name = element.GetName();
        element = CXmlElement();
        EXPECT_STREQ(name, "name");
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
    EXPECT_EQ(Show(deep).size(), std::size_t{count} * 7 + 4);
    EXPECT_EQ(Show(wide.AppendChild(*deep.Begin())).size(), std::size_t{count} * 7 - 3) << "a copy";
}

TEST(XmlString, SharesItsCellByCount)
{
    EXPECT_TRUE(CXmlString(nullptr).IsNull());
    CXmlString text("abc\0d", 5);
    EXPECT_EQ(text.Length() - CXmlString("abc\0d").Length(), 2U);
    const CXmlString copy = text;
    EXPECT_EQ(copy.Text(), text.Text());
    EXPECT_EQ(text.References(), 2U);
    text = CXmlString();
    EXPECT_EQ(copy.References(), 1U);
}

TEST(XmlVector, DoublesFromOne)
{
    CXmlVector<CXmlString> list;
    for (const std::size_t capacity : {1U, 2U, 4U, 4U, 8U}) {
        EXPECT_TRUE(list.Add(CXmlString(std::to_string(list.Size()))));
        EXPECT_EQ(list.Capacity(), capacity);
    }
    EXPECT_EQ(list[4].View(), "4");
}

} // namespace
