#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <vector>

#include "xml/xml_memory.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

std::string Bytes(const std::string& hex)
{
    std::istringstream digits(hex);
    std::string bytes;
    for (unsigned value = 0; digits >> std::hex >> value;) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

// An array leaf with two items in it and two in extension cells.
CXmlElement ArrayOf(XmlKind item_kind, const std::vector<std::string>& items)
{
    std::string inline_items = items[0] + items[1];
    std::string value(4, '\0');
    const auto size = static_cast<std::uint32_t>(inline_items.size() + xml_address_width);
    PutField(reinterpret_cast<std::byte*>(value.data()), size);
    value += inline_items;
    std::array<std::byte*, 2> cells{};
    for (std::size_t at = 0; at < 2; ++at) {
        cells[at] = static_cast<std::byte*>(AllocateXml(items[2 + at].size() + xml_address_width, 1));
        PutField(PutBytes(cells[at], items[2 + at]), static_cast<std::byte*>(nullptr));
    }
    PutField(cells[0] + items[2].size(), cells[1]);
    value.append(reinterpret_cast<const char*>(&cells[0]), sizeof cells[0]);
    const auto array_kind = static_cast<XmlKind>(-static_cast<int>(item_kind));
    return CXmlElement(MakeFixedBlock("list", array_kind, value, 65001));
}

TEST(XmlStore, PacksBlocksByteForByteWhateverTheWidthOfAnAddress)
{
    std::array<std::byte, 100> block{};
    const auto packed = [&](std::size_t size) { return std::string(reinterpret_cast<char*>(block.data()), size); };
    PackElement<4>(block.data(), "ab", 65001);
    EXPECT_EQ(packed(XmlLayout<4>::ElementSize(2)),
              Bytes("1F 00 00 00 00 E9 FD 00 00 00 00 00 00 01 00 00 0F 00 00 00 00 00 00 04 00 00 00 00 00 00 00 00 "
                    "00 00 00 00 00 00 00 00 00 FF 0A 00 00 00 02 00 00 00 61 62 00 00 00 00"));
    PackElement<8>(block.data(), "ab", 65001);
    EXPECT_EQ(packed(XmlLayout<8>::ElementSize(2)),
              Bytes("1F 00 00 00 00 E9 FD 00 00 00 00 00 00 00 00 00 00 01 00 00 17 00 00 00 00 00 00 08 00 00 00 00 "
                    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 FF 0E 00 00 00 02 00 "
                    "00 00 61 62 00 00 00 00 00 00 00 00"));
    PackTextLeaf<4>(block.data(), "ab", "xyz", 932);
    EXPECT_EQ(packed(XmlLayout<4>::TextLeafSize(2, 3)),
              Bytes("1F 00 00 00 00 A4 03 00 00 00 00 00 00 01 00 01 03 00 00 00 78 79 7A 00 00 00 00 00 00 FF 0A 00 "
                    "00 00 02 00 00 00 61 62 00 00 00 00"));
    PackFixedLeaf<4>(block.data(), "ab", XmlKind::signed_16, {"\xFE\xFF", 2}, 932);
    EXPECT_EQ(packed(XmlLayout<4>::FixedLeafSize(2, 2)),
              Bytes("1F 00 00 00 00 A4 03 00 00 00 00 00 00 01 00 06 FE FF 00 00 00 00 00 00 FF 0A 00 00 00 02 00 00 "
                    "00 61 62 00 00 00 00"));
}

TEST(XmlStore, KeepsChildrenAndAttributesInTheOrderTheyWereAdded)
{
    CXmlElement root("r", 65001);
    EXPECT_TRUE(root.Begin() == root.End());
    root.AddChild("a", true);
    root.AddAttribute("x", CXmlString("1"));
    root.AddChild("b", std::int16_t{-7});
    root.AddChild("a", false);
    root.AddAttribute("x", CXmlString(""));
    EXPECT_EQ(ChildNames(root), "a,b,a,");
    EXPECT_EQ(Show(root), R"(<r x="1" x=""><a>true</a><b>-7</b><a>false</a></r>)");
    EXPECT_EQ(root.GetAttributes().GetName(), nullptr);
    EXPECT_EQ(ChildNames(root.GetAttributes()), "x,x,");
    CXmlIterator it = root.Begin();
    EXPECT_STREQ((*it++).GetName(), "a");
    EXPECT_STREQ((*it).GetName(), "b");
}

TEST(XmlStore, CountsHandlesAndTheLink)
{
    CXmlElement root("r", 65001);
    CXmlElement child = root.AddChild("c", true);
    EXPECT_EQ(References(root.Block()), 1U);
    EXPECT_EQ(References(child.Block()), 2U);
    EXPECT_EQ(OwnerOf(child.Block()), LastSlotOf(root.Node()));
    {
        const CXmlElement copy = child;
        EXPECT_EQ(References(child.Block()), 3U);
        const CXmlIterator it = root.Begin();
        EXPECT_EQ(References(root.Block()), 1U) << "an iterator holds no block";
    }
    std::byte* block = child.Block();
    child = CXmlElement();
    EXPECT_EQ(References(block), 1U);
}

TEST(XmlStore, AnEmptyHandleAndALeafAnswerWithNothing)
{
    CXmlElement empty;
    CXmlElement leaf = TextLeaf("t", "x");
    CXmlElement root("r", 65001);
    EXPECT_EQ(empty.GetName(), nullptr);
    EXPECT_EQ(empty.GetCodePage(), 0U);
    EXPECT_EQ(empty.AsBool().has + empty.AsShort().has + empty.AsString().has + empty.AsStringList().has, 0);
    for (CXmlElement* no_parent : {&empty, &leaf}) {
        EXPECT_TRUE(no_parent->Begin() == no_parent->End());
        EXPECT_TRUE(no_parent->AddChild("c", true).IsEmpty());
        EXPECT_TRUE(no_parent->AppendChild(root).IsEmpty());
        EXPECT_TRUE(no_parent->AddAttribute("a", CXmlString("1")).IsEmpty());
        EXPECT_TRUE(no_parent->GetAttributes().IsEmpty());
    }
    EXPECT_TRUE(root.AppendChild(empty).IsEmpty());
    EXPECT_TRUE(root.AppendChild(root.GetAttributes()).IsEmpty());
    EXPECT_TRUE(root.GetAttributes().AppendChild(CXmlElement("e", 65001)).IsEmpty());
    EXPECT_EQ(Show(root), "<r/>");
}

TEST(XmlStore, LinksAFreeStandingChildItself)
{
    CXmlElement root("r", 65001);
    CXmlElement child("c", 932);
    const CXmlElement linked = root.AppendChild(child);
    EXPECT_EQ(linked.Node(), child.Node());
    child.AddChild("late", true);
    EXPECT_EQ(Show(root), "<r><c><late>true</late></c></r>");
}

TEST(XmlStore, CopiesWhatCannotBeLinked)
{
    CXmlElement root("r", 65001);
    CXmlElement top = root.AppendChild(CXmlElement("t", 65001));
    CXmlElement held;
    {
        CXmlElement gone("gone", 65001);
        held = gone.AddChild("first", true);
        gone.AddChild("second", true);
    }
    EXPECT_EQ(OwnerOf(held.Block()), nullptr);
    EXPECT_NE(root.AppendChild(held).Node(), held.Node()) << "its sibling stays behind";
    EXPECT_EQ(Show(root), "<r><t/><first>true</first></r>");

    root.AppendChild(top);
    top.AppendChild(root);
    EXPECT_EQ(Show(root), "<r><t><r><t/><first>true</first><t/></r></t><first>true</first><t/></r>");
    root.AppendChild(root);
    EXPECT_EQ(ChildNames(root), "t,first,t,r,");
    EXPECT_EQ(ChildNames(Child(root, 3)), "t,first,t,");
}

TEST(XmlStore, WhatAHandleHoldsOutlivesItsParent)
{
    CXmlElement first;
    CXmlElement deep;
    {
        CXmlElement root("r", 65001);
        first = root.AddChild("first", std::int16_t{12});
        root.AppendChild(CXmlElement("middle", 65001));
        CXmlElement last = root.AppendChild(CXmlElement("last", 65001));
        deep = last.AppendChild(TextLeaf("deep", "text"));
    }
    EXPECT_STREQ(first.GetName(), "first");
    EXPECT_EQ(first.AsShort().value, 12);
    // Still behind the first one: "last" hangs from "middle".
    EXPECT_NE(LoadField<std::byte*>(LinkOf(first.Node())), nullptr);
    first = CXmlElement();
    EXPECT_EQ(OwnerOf(deep.Block()), nullptr);
    EXPECT_EQ(deep.AsString().value.View(), "text");
}

TEST(XmlStore, ANameStaysReadableWhileAnIteratorHoldsItsTable)
{
    for (const bool compact : {false, true}) {
        CXmlElement outer("outer", 65001);
        CXmlElement element("name", 65001);
        element.AddChild("c", true);
        if (compact) {
            outer.AppendChild(element);
            element = outer.AppendChild(element);
            outer = CXmlElement();
        }
        CXmlIterator it = element.Begin();
        const char* name = element.GetName();
        element = CXmlElement();
        EXPECT_STREQ(name, "name");
        it = CXmlIterator();
    }
}

TEST(XmlStore, PassesOverSkippedNodesWhereverTheyStand)
{
    for (const std::string skipped : {"a", "b", "d", "ab", "cd", "abcd"}) {
        SCOPED_TRACE(skipped);
        CXmlElement parent("p", 65001);
        CXmlElement root("r", 65001);
        std::string left;
        for (const char* name : {"a", "b", "c", "d"}) {
            root.AddChild(name, true);
            left += skipped.find(*name) == std::string::npos ? std::string(name) + "," : "";
        }
        parent.AppendChild(root);
        for (CXmlElement tree : {root, parent.AppendChild(root)}) { // in chains, and inline
            std::vector<CXmlElement> children;
            for (CXmlIterator it = tree.Begin(); it != tree.End(); ++it) {
                children.push_back(*it);
            }
            for (const CXmlElement& child : children) {
                if (skipped.find(child.GetName()) != std::string::npos) {
                    PutField(child.Node(), xml_skipped_id);
                }
            }
            EXPECT_EQ(ChildNames(tree), left);
            CXmlElement copied("p", 65001);
            EXPECT_EQ(ChildNames(copied.AppendChild(tree)), left);
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
    CXmlElement other = wide.GetAttributes();
    other.AddChild("last", true);
    wide.AddAttribute("behind", CXmlString("1"));
    const std::string text = Show(wide);
    EXPECT_EQ(text.substr(text.find(" last")).substr(0, 26), R"( last="true" behind="1"><c)");
    EXPECT_EQ(Show(deep).size(), std::size_t{count} * 7 + 4);
    bottom = CXmlElement();
    CXmlElement inline_deep = wide.AppendChild(deep.Begin() == deep.End() ? deep : Child(deep, 0));
    EXPECT_EQ(Show(inline_deep).size(), std::size_t{count} * 7 - 3);
}

TEST(XmlStore, CarriesArraysWithExtensionCells)
{
    const std::string one("\1\0\0\0x", 5);
    const std::string two("\2\0\0\0yz", 6);
    const std::string none("\0\0\0\0", 4);
    const struct {
        XmlKind kind;
        std::vector<std::string> items;
        const char* text;
    } rows[] = {
        {XmlKind::text, {one, none, two, one}, "x  yz x"},
        {XmlKind::boolean, {{"\0", 1}, "\1", "\2", {"\0", 1}}, "false true true false"},
        {XmlKind::signed_16, {"\xFF\xFF", "\1\1", {"\0\0", 2}, {"\2\0", 2}}, "-1 257 0 2"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        CXmlElement root("r", 65001);
        CXmlElement array = root.AppendChild(ArrayOf(row.kind, row.items));
        EXPECT_EQ(array.AsBool().has + array.AsShort().has + array.AsString().has, 0);
        EXPECT_EQ(array.AsStringList().value.Size(), 4U);
        EXPECT_TRUE(array.Begin() == array.End());
        const std::string shown = std::string("<list>") + row.text + "</list>";
        EXPECT_EQ(Show(array), shown);
        const CXmlElement copy = root.AppendChild(array);
        EXPECT_EQ(Show(copy), shown);
        EXPECT_EQ(LoadField<std::byte*>(LastSlotOf(copy.Node())), nullptr) << "all items inline";
        EXPECT_EQ(Show(root), "<r>" + shown + shown + "</r>");
    }
}

TEST(XmlStore, AssigningTheSameNodeKeepsItAndADocumentKeepsItsFormat)
{
    CXmlDocument document;
    EXPECT_TRUE(document.IsEmpty());
    EXPECT_EQ(document.pretty, 1);
    document.indent = 4;
    CXmlElement root("r", 65001);
    document = root;
    document = document.GetAttributes().IsEmpty() ? CXmlElement() : root;
    EXPECT_EQ(References(root.Block()), 2U);
    EXPECT_EQ(document.indent, 4);
}

TEST(XmlString, SharesItsCellByCount)
{
    EXPECT_EQ(CXmlString().Length(), 0U);
    EXPECT_TRUE(CXmlString(nullptr).IsNull());
    CXmlString text("abc\0d", 5);
    EXPECT_EQ(text.Length(), 5U);
    EXPECT_EQ(CXmlString("abc\0d").Length(), 3U);
    {
        const CXmlString copy = text;
        EXPECT_EQ(copy.Text(), text.Text());
        EXPECT_EQ(text.References(), 2U);
    }
    EXPECT_EQ(text.References(), 1U);
}

TEST(XmlVector, DoublesFromOne)
{
    CXmlVector<CXmlString> list;
    std::vector<std::size_t> capacities = {list.Capacity()};
    for (int at = 0; at < 5; ++at) {
        EXPECT_TRUE(list.Add(CXmlString(std::to_string(at))));
        capacities.push_back(list.Capacity());
    }
    EXPECT_EQ(capacities, (std::vector<std::size_t>{1, 1, 2, 4, 4, 8}));
    EXPECT_EQ(list[4].View(), "4");
}

} // namespace
