#include <gtest/gtest.h>

#include <functional>

#include "tests/support/failing_memory.h"
#include "watched_memory.h"
#include "xml/xml_compactor.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

// About 64 KB, not in the code page that is taken without a declaration.
std::string BigText()
{
    const std::string name = "<name#>" + std::string(1500, 't') + "</name#>";
    return "<?xml version=\"1.0\" encoding=\"Shift-JIS\"?><R>" +
           Times(40, "<part id=\"#\" kind=\"x\">" + name + "<n>-1</n></part>") + "</R>";
}

// Runs `work` with each allocation of its run failing, alone and with all behind it. `work` gives the text of its
// result or, when it reports failure, "-".
void FailEachAllocation(const std::string& expected, const std::function<std::string()>& work)
{
    const std::size_t live = watched_memory::live_pieces;
    watched_memory::FailFrom(0, true);
    ASSERT_EQ(work(), expected);
    const std::size_t allocations = watched_memory::asked;
    for (const bool once : {true, false}) {
        for (std::size_t at = 1; at <= allocations; ++at) {
            watched_memory::FailFrom(at, once);
            const std::string result = work();
            ASSERT_TRUE(result == "-" || (at != 1 && result == expected)) << at;
            ASSERT_EQ(watched_memory::live_pieces, live) << at;
        }
        watched_memory::fail_from = 0;
    }
}

TEST(XmlMemoryFault, AReadOrAWriteEndsWholeOrReportsFailure)
{
    FailEachAllocation(BigText(), [text = BigText()] {
        const CXmlDocument document = Read(text);
        watched_memory::fail_from = 0;
        return Write(document);
    });
    CXmlElement root("t", 932);
    root.AppendChild(Read(BigText()));
    const CXmlElement copy = root.AppendChild(*root.Begin());
    FailEachAllocation(Write(root), [&] { return Write(root); });
}

void FailCopiesOf(const CXmlElement& inside)
{
    for (const std::uint32_t code_page : {932U, 65001U}) {
        CXmlElement expected("t", code_page);
        expected.AppendChild(inside);
        FailEachAllocation(Write(expected), [&] {
            CXmlElement target("t", code_page);
            const bool appended = !target.AppendChild(inside).IsEmpty();
            EXPECT_TRUE(appended || target.IsEmpty() || target.Begin() == target.End());
            watched_memory::fail_from = 0;
            return appended ? Write(target) : "-";
        });
    }
}

TEST(XmlMemoryFault, ACopyEndsWholeOrReportsFailureAndLeavesItsParent)
{
    CXmlElement outer("outer", 932);
    FailCopiesOf(outer.AppendChild(Read(BigText())));
    // A text that fills the first page up to each of the pieces behind it in turn.
    for (std::size_t filled = 3850; filled < 4096; filled += 5) {
        CXmlElement inside = outer.AppendChild(CXmlElement("r", 932));
        inside.AddAttribute("x", CXmlString("1"));
        inside.AppendChild(TextLeaf("fill", std::string(filled, 't'), 932));
        inside.AppendChild(TextArray("list", {"a", "\x95\x94"}));
        CXmlElement element = inside.AppendChild(CXmlElement("e", 932));
        element.AddAttribute("y", CXmlString("\x95\x94"));
        element.AddChild("n", true);
        inside.AppendChild(TextLeaf("long", std::string(4200, 'u'), 932));
        inside.AppendChild(TextLeaf("long", std::string(4200, 'v'), 932));
        FailCopiesOf(inside);
    }
}

// The standard library's own memory: its strings take the conversions of code pages and the text that is written.
TEST(XmlMemoryFault, ACopyOrATextThatNoStringCanHoldReportsFailure)
{
    CXmlElement outer("outer", 932);
    CXmlElement inside = outer.AppendChild(Read(BigText()));
    inside.AppendChild(TextLeaf("a-name-too-long-for-no-memory", std::string(20'000, 'u'), 932));
    for (const bool for_good : {false, true}) {
        failing_memory::fails_for_good = for_good;
        failing_memory::one_failed = true;
        for (std::size_t at = 1; failing_memory::one_failed; ++at) {
            CXmlElement target("t", 65001);
            CXmlDocument document;
            std::string text;
            failing_memory::one_failed = false;
            failing_memory::allocations_left = at;
            document = target.AppendChild(inside);
            const bool written = WriteXml(text, document);
            failing_memory::allocations_left = 0;
            ASSERT_EQ(text.empty(), !written) << at;
            ASSERT_TRUE(written ? text.ends_with("</R>") : failing_memory::one_failed) << at;
            ASSERT_TRUE(target.Begin() == target.End() || Show(document).size() > 80'000) << at;
        }
    }
    failing_memory::fails_for_good = false;
}

TEST(XmlMemoryFault, ATextThatWasLostIsNotTakenForAnEmptyOne)
{
    FailEachAllocation("<r x=\"v\" y=\"\" z=\"w\"><t>u</t></r>", [] {
        CXmlElement root("r", 65001);
        const bool made = !root.AddAttribute("x", CXmlString("v")).IsEmpty() &&
                          !root.AddAttribute("y", CXmlString()).IsEmpty() && !root.AddAttribute("z", "w").IsEmpty() &&
                          !root.AppendChild(CXmlElement("t", CXmlString("u"), 65001)).IsEmpty();
        watched_memory::fail_from = 0;
        return made ? Show(root) : "-";
    });
}

TEST(XmlMemoryFault, AnAppendOrAReadingOfValuesReportsFailure)
{
    const CXmlElement array = TextArray("list", {"1", "2"});
    FailEachAllocation("r|true", [&array] {
        CXmlElement root("r", 65001);
        CXmlElement copies("c", 65001);
        CXmlElement deep("d", 65001);
        const bool made = !root.AddChild("a", true).IsEmpty() && !copies.AppendChild(root).IsEmpty() &&
                          !deep.AppendChild(CXmlElement("d", 65001)).IsEmpty() && !root.AppendChild(deep).IsEmpty() &&
                          array.AsStringList().has == 1;
        const CXmlElement copy = made ? copies.AppendChild(root) : CXmlElement();
        const char* name = copy.GetName();
        const CXmlValue<CXmlString> text = copy.IsEmpty() ? copy.AsString() : (*copy.Begin()).AsString();
        return name == nullptr || text.has == 0 ? "-" : std::string(name) + "|" + text.value.Text();
    });
}

TEST(XmlMemoryFault, ANameTableGivesANameOneIdOrReportsFailure)
{
    FailEachAllocation("the same", [] {
        const auto table = CXmlNameTable::Make();
        for (int at = 0; table && at < 80; ++at) {
            if (const int id = table->Intern(std::to_string(at % 40) + "th"); id != at % 40 + 1) {
                return id == 0 ? "-" : "another";
            }
        }
        return table ? "the same" : "-";
    });
}

// Behind the last item of an array of texts.
void AddCell(std::byte* array)
{
    const std::string bytes = Counted("more") + std::string(xml_address_width, '\0');
    auto* cell = static_cast<std::byte*>(AllocateXml(bytes.size(), 1));
    PutBytes(cell, bytes);
    PutField(LastSlotOf(array), cell);
}

void GrowCellsInACopy()
{
    CXmlElement root("r", 932);
    root.GetAttributes().AppendChild(TextArray("x", {"1"}));
    root.AppendChild(TextArray("y", {"2"}));
    CXmlElement copy(CompactXml(root.Node(), root.Block(), 932));
    copy.AddChild("late", true); // or it would go without a look at what is in it
    AddCell((*copy.GetAttributes().Begin()).Node());
    AddCell((*copy.Begin()).Node());
    AddCell(NameArrayOf(copy.Block()));
    EXPECT_EQ(Show(copy), "<r x=\"1 more\"><y>2 more</y><late>true</late></r>");
}

TEST(XmlMemoryFault, WhatHangsInsideACopyGoesWithIt)
{
    const std::size_t before = watched_memory::live_pieces;
    GrowCellsInACopy();
    for (const char* text : {"<r><n/></r>", "<r><n><m/></n></r>", "<r><n><m x=\"1\"><l>1</l></m></n><o/></r>"}) {
        const CXmlElement read = Read(Declared(text));
        CXmlElement copy(CompactXml(read.Node(), read.Block(), 65001));
        for (CXmlElement inside = copy; inside.Begin() != inside.End(); inside = *inside.Begin()) {
            inside.AddChild("late", true);
            inside.AddAttribute("late", "1");
            inside.AppendChild(Read(Declared("<late><t>1</t><e/></late>")));
        }
    }
    EXPECT_EQ(watched_memory::live_pieces, before);
}

} // namespace
