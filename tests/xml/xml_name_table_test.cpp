#include <gtest/gtest.h>

#include <vector>

#include "xml/xml_name_table.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

TEST(XmlNameTable, GrowsWithTheFifthName)
{
    CXmlNameTable table;
    const std::uint32_t bucket_counts[] = {7, 7, 7, 7, 15, 15, 15, 15, 31};
    const char* names[] = {"a", "b", "abc", "abcd", "abcde", "abcdf", "ab", "", "c"};
    for (std::uint16_t at = 0; at < 9; ++at) {
        EXPECT_EQ(table.Find(names[at]), 0);
        EXPECT_EQ(table.Intern(names[at]), at + 1);
        EXPECT_EQ(table.BucketCount(), bucket_counts[at]) << names[at];
        for (std::uint16_t earlier = 0; earlier < at; ++earlier) {
            EXPECT_EQ(table.Find(names[earlier]), earlier + 1) << "also where it has moved";
        }
    }
}

// All in one bucket, and two of them with one fingerprint.
TEST(XmlNameTable, TellsTheNamesOfALargeBucketApart)
{
    CXmlNameTable table;
    std::vector<std::string> names{"namecjghhhwlw", "namekafpoeytm"};
    for (int at = 0; at < 100; ++at) {
        names.push_back("name" + std::to_string(at));
    }
    for (const int round : {1, 2}) {
        for (std::size_t at = 0; at < names.size(); ++at) {
            EXPECT_EQ(table.Intern(names[at]), at + 1) << round;
        }
    }
}

TEST(XmlNameTable, DecodesTheArrayAndItsExtensionCells)
{
    const std::string cell = Counted("x") + std::string(xml_address_width, '\0');
    const char* cell_address = cell.data();
    const std::string link(reinterpret_cast<const char*>(&cell_address), sizeof cell_address);
    const std::string array = std::string{0, 0, '\xFF'} + Counted(Counted("x") + Counted("y") + link);
    CXmlNameTable table;
    const auto* bytes = reinterpret_cast<const std::byte*>(array.data());
    EXPECT_STREQ(table.NameOf(2, bytes), "y");
    EXPECT_STREQ(table.NameOf(3, bytes), "x");
    EXPECT_STREQ(table.NameOf(1, bytes), "x");
    EXPECT_EQ(table.NameOf(0, bytes), nullptr);
    EXPECT_EQ(table.NameOf(4, bytes), nullptr);
    EXPECT_EQ(table.Find("x"), 3) << "of equal names the later counts";
}

} // namespace
