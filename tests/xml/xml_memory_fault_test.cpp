#include <gtest/gtest.h>

#include <functional>

#include "watched_memory.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

// About 64 KB, not in the code page that is taken without a declaration.
std::string BigText()
{
    std::string text = "<?xml version=\"1.0\" encoding=\"Shift-JIS\"?><R>";
    for (int at = 0; at < 40; ++at) {
        const std::string number = std::to_string(at);
        text += "<part id=\"" + number + "\" kind=\"x\"><name" + number + ">" + std::string(1500, 't') + "</name" +
                number + "><n>-1</n></part>";
    }
    return text + "</R>";
}

// Runs `work` with each allocation of its run failing, alone and with all behind it. `work` gives the text of its
// result or, when it reports failure, "-".
void FailEachAllocation(const std::string& expected, const std::function<std::string()>& work)
{
    const std::size_t live = watched_memory::LivePieces();
    watched_memory::FailFrom(0, true);
    ASSERT_EQ(work(), expected);
    const std::size_t allocations = watched_memory::Asked();
    for (const bool once : {true, false}) {
        for (std::size_t at = 1; at <= allocations; ++at) {
            watched_memory::FailFrom(at, once);
            const std::string result = work();
            ASSERT_TRUE(result == "-" || (at != 1 && result == expected)) << at;
            ASSERT_EQ(watched_memory::LivePieces(), live) << at;
        }
        watched_memory::StopFailing();
    }
}

TEST(XmlMemoryFault, AReadOrAWriteEndsWholeOrReportsFailure)
{
    FailEachAllocation(BigText(), [text = BigText()] {
        const CXmlDocument document = Read(text);
        watched_memory::StopFailing();
        return Write(document);
    });
    CXmlElement root("t", 932);
    root.AppendChild(Read(BigText()));
    const CXmlElement copy = root.AppendChild(*root.Begin());
    FailEachAllocation(Write(root), [&] { return Write(root); });
}

TEST(XmlMemoryFault, ACopyEndsWholeOrReportsFailureAndLeavesItsParent)
{
    CXmlElement outer("outer", 932);
    const CXmlElement inside = outer.AppendChild(Read(BigText()));
    for (const std::uint32_t code_page : {932U, 65001U}) {
        CXmlElement expected("t", code_page);
        expected.AppendChild(inside);
        FailEachAllocation(Write(expected), [&] {
            CXmlElement target("t", code_page);
            const bool appended = !target.AppendChild(inside).IsEmpty();
            EXPECT_TRUE(appended || target.IsEmpty() || target.Begin() == target.End());
            watched_memory::StopFailing();
            return appended ? Write(target) : "-";
        });
    }
}

TEST(XmlMemoryFault, ATextThatWasLostIsNotTakenForAnEmptyOne)
{
    FailEachAllocation("<r x=\"v\" y=\"\" z=\"w\"><t>u</t></r>", [] {
        CXmlElement root("r", 65001);
        const bool made = !root.AddAttribute("x", CXmlString("v")).IsEmpty() &&
                          !root.AddAttribute("y", CXmlString()).IsEmpty() && !root.AddAttribute("z", "w").IsEmpty() &&
                          !root.AppendChild(CXmlElement("t", CXmlString("u"), 65001)).IsEmpty();
        watched_memory::StopFailing();
        return made ? Show(root) : "-";
    });
}

TEST(XmlMemoryFault, AnAppendOrAReadingOfValuesReportsFailure)
{
    FailEachAllocation("r|true", [] {
        CXmlElement root("r", 65001);
        CXmlElement copies("c", 65001);
        const bool made = !root.AddChild("a", true).IsEmpty() && !copies.AppendChild(root).IsEmpty();
        const CXmlElement copy = made ? copies.AppendChild(root) : CXmlElement();
        const char* name = copy.GetName();
        const CXmlValue<CXmlString> text = copy.IsEmpty() ? copy.AsString() : (*copy.Begin()).AsString();
        return name == nullptr || text.has == 0 ? "-" : std::string(name) + "|" + text.value.Text();
    });
}

} // namespace
