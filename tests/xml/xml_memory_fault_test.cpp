#include <gtest/gtest.h>

#include <functional>

#include "watched_memory.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

// About 64 KB.
std::string BigText()
{
    std::string text(declaration);
    text += "<R>";
    for (int at = 0; at < 700; ++at) {
        const std::string number = std::to_string(at);
        text += "<part id=\"" + number + "\" kind=\"x\"><name" + number + ">a part of some length</name" + number +
                "><n>-1</n></part>";
    }
    return text + "</R>";
}

// Runs `work` with each allocation of its run failing in turn, alone and with all behind it. `work` gives the text of
// its result, or "-" when it reports failure.
void FailEachAllocation(const std::string& expected, const std::function<std::string()>& work)
{
    const std::size_t live = watched_memory::LivePieces();
    watched_memory::FailFrom(0, true);
    ASSERT_EQ(work(), expected);
    const std::size_t allocations = watched_memory::Asked();
    ASSERT_GT(allocations, 0U);
    for (const bool once : {true, false}) {
        std::size_t failures = 0;
        // Every one at first, then in steps: each costs a whole run.
        for (std::size_t at = 1; at <= allocations; at += 1 + at / 64) {
            watched_memory::FailFrom(at, once);
            const std::string result = work();
            watched_memory::FailFrom(0, true);
            failures += result == "-" ? 1 : 0;
            ASSERT_TRUE(result == expected || result == "-") << at;
            ASSERT_EQ(watched_memory::LivePieces(), live) << at;
        }
        EXPECT_GT(failures, 0U);
    }
}

// What was made under failing memory, shown with memory enough.
std::string ShowSafely(const CXmlElement& element)
{
    watched_memory::FailFrom(0, true);
    return Show(element);
}

TEST(XmlMemoryFault, AReadEndsWholeOrReportsFailure)
{
    const std::string text = BigText();
    FailEachAllocation(text.substr(declaration.size()), [&] {
        CXmlDocument document = Read(text);
        return ShowSafely(document);
    });
}

TEST(XmlMemoryFault, ACopyEndsWholeOrReportsFailureAndLeavesItsParent)
{
    const CXmlDocument source =
        Read(std::string(declaration) + "<outer>" + BigText().substr(declaration.size()) + "</outer>");
    const CXmlElement inside = Child(source, 0);
    for (const std::uint32_t code_page : {65001, 932}) {
        FailEachAllocation("<t>" + Show(inside) + "</t>", [&] {
            CXmlElement target("t", code_page);
            const bool appended = !target.AppendChild(inside).IsEmpty();
            const std::string result = ShowSafely(target);
            EXPECT_TRUE(appended || result == "<t/>" || result == "-");
            return appended ? result : "-";
        });
    }
}

TEST(XmlMemoryFault, AWriteEndsWholeOrReportsFailure)
{
    CXmlElement root("t", 65001);
    root.AppendChild(Read(BigText()));
    const CXmlElement copy = root.AppendChild(Child(root, 0));
    FailEachAllocation(Show(root), [&] { return Show(root); });
}

TEST(XmlMemoryFault, AnAppendOrAReadingOfValuesReportsFailure)
{
    FailEachAllocation("<r x=\"1\"><a>true</a></r>|r|a,", [] {
        CXmlElement root("r", 65001);
        CXmlElement copies("c", 65001);
        const CXmlString value("1");
        const bool made =
            !value.IsNull() && !root.AddAttribute("x", value).IsEmpty() && !root.AddChild("a", true).IsEmpty();
        const CXmlElement linked = made ? copies.AppendChild(root) : CXmlElement();
        const CXmlElement copy = copies.AppendChild(linked);
        const CXmlElement leaf = copy.IsEmpty() ? copy : *copy.Begin();
        const char* name = copy.GetName();
        const CXmlValue<CXmlString> text = leaf.AsString();
        if (name == nullptr || leaf.GetName() == nullptr || text.has == 0) {
            return std::string("-");
        }
        return ShowSafely(copy) + "|" + name + "|" + ChildNames(copy);
    });
}

} // namespace
