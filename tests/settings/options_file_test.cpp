#include "settings/options_file.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>

#include "tests/support/failing_memory.h"
#include "tests/support/temporary_folder.h"

using namespace partkeep;

namespace {

constexpr std::int16_t kept = -77; // what the caller has set before

const std::string complete_file = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                                  "<ZanPartkeepReadConfig>\r\n"
                                  "  <InputNoFlag>true</InputNoFlag>\r\n"
                                  "  <FilterState>2</FilterState>\r\n"
                                  "</ZanPartkeepReadConfig>";

class OptionsFile : public testing::Test {
protected:
    [[nodiscard]] std::u16string Path() const { return folder_.Core(u"ZanPartkeepConfig.xml"); }
    [[nodiscard]] std::string Bytes() const { return ReadBytes(folder_.Path("ZanPartkeepConfig.xml")); }
    void Put(const std::string& bytes) const { WriteBytes(folder_.Path("ZanPartkeepConfig.xml"), bytes); }

    CTemporaryFolder folder_;
};

// The first of all: later on the XML library has what it needs.
TEST_F(OptionsFile, IsWrittenWholeOrStaysWhenMemoryIsShort)
{
    bool failed = true;
    for (std::size_t at = 1; failed; ++at) {
        Put("old");
        failing_memory::one_failed = false;
        failing_memory::allocations_left = at;
        try {
            WriteOptionsFile(Path(), {2, 2});
        } catch (const std::bad_alloc&) {
        }
        failing_memory::allocations_left = 0;
        failed = failing_memory::one_failed;
        EXPECT_TRUE(Bytes() == complete_file || (failed && Bytes() == "old")) << at;
    }
}

TEST_F(OptionsFile, IsWrittenByteForByteWithCrLf)
{
    Put(std::string(10'000, 'x'));
    WriteOptionsFile(Path(), {2, 2});
    EXPECT_EQ(Bytes(), complete_file) << "any prompt but 0 is on";
    WriteOptionsFile(Path(), {0, -32768});
    EXPECT_NE(Bytes().find("<InputNoFlag>false</InputNoFlag>\r\n  <FilterState>-32768<"), std::string::npos);
    WriteOptionsFile(folder_.Core(u"nowhere\\file.xml"), {1, 2}); // passed over in silence
    EXPECT_EQ(NamesIn(folder_.Path()).size(), 1U);
}

TEST_F(OptionsFile, TellsWhenTheOldOneMustBeKept)
{
    SelectionOptions options{kept, kept};
    Put(complete_file);
    {
        const CReadTrouble trouble(folder_.Path("ZanPartkeepConfig.xml"));
        EXPECT_EQ(ReadOptionsFile(Path(), options), OldFile::Kept);
        EXPECT_EQ(std::pair(options.quantityPrompt, options.filterState), std::pair(kept, kept));
    }
    WriteOptionsFile(Path(), {0, 0}, OldFile::Kept);
    EXPECT_EQ(ReadBytes(folder_.Path("ZanPartkeepConfig.xml.kept1")), complete_file);
    EXPECT_EQ(ReadOptionsFile(Path(), options), OldFile::Dropped);
}

TEST_F(OptionsFile, OverwritesOnlyWhatTheFileHolds)
{
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";
    const std::tuple<const char*, std::string, std::int16_t, std::int16_t> rows[] = {
        {"complete", complete_file, 1, 2},
        {"other order", declaration + "<r>\n<FilterState>3</FilterState><InputNoFlag>false</InputNoFlag></r>", 0, 3},
        {"another leaf and root", declaration + "<Other><x>1</x><FilterState>7</FilterState></Other>", kept, 7},
        {"a name twice", declaration + "<r><FilterState>1</FilterState><FilterState>2</FilterState></r>", kept, 2},
        {"another case of a name", declaration + "<r><filterstate>1</filterstate></r>", kept, kept},
        {"no such words", declaration + "<r><InputNoFlag>True</InputNoFlag><FilterState>x</FilterState></r>", 0, 0},
        {"leaves without value", declaration + "<r><InputNoFlag/><FilterState/></r>", kept, kept},
        {"an empty text", declaration + "<r><InputNoFlag></InputNoFlag><FilterState></FilterState></r>", 0, 0},
        {"a root of text", declaration + "<r>true</r>", kept, kept},
        {"an empty file", "", kept, kept},
        {"cut in the end tag", complete_file.substr(0, complete_file.size() - 2), kept, kept},
        {"another code page", "<?xml encoding=\"UTF-7\"?>\r\n<r><+AEk-nputNoFlag>true</+AEk-nputNoFlag></r>", 1, kept},
    };
    SelectionOptions options{kept, kept};
    EXPECT_EQ(ReadOptionsFile(Path(), options), OldFile::Dropped) << "no file";
    EXPECT_EQ(ReadOptionsFile(folder_.Core(), options), OldFile::Dropped) << "a folder";
    for (const auto& [label, file, prompt_read, filter_read] : rows) {
        Put(file);
        ReadOptionsFile(Path(), options);
        EXPECT_EQ(std::exchange(options.quantityPrompt, kept), prompt_read) << label;
        EXPECT_EQ(std::exchange(options.filterState, kept), filter_read) << label;
    }
}

} // namespace
