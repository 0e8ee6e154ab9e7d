#include "settings/local_strings.h"

#include "platform/string_resource.h"
#include "settings/process_values.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace partkeep {
namespace {

std::u16string StringIn(std::int32_t language_id, std::int32_t number)
{
    TheProcessValues().languageId = language_id;
    std::u16string text = LoadLocalString(number);
    TheProcessValues().languageId = 0;
    return text;
}

TEST(LocalStrings, ReadAsTheTableSays)
{
    struct Row {
        std::int32_t number;
        std::u16string english, japanese, chinese;
    };
    const Row rows[] = {
        {100, u"Kolvyn PartkeepRead", u"Kolvyn Partkeep読み込み", u"读取Kolvyn Partkeep"},
        {111, u"2D Image", u"展開図", u"PNG图形/2D位图"},
        {112, u"Display Unit (&U)", u"表示単位 (&U)", u"显示单位(&U)"},
        {122, u"Part NO.", u"パーツ員数\n", u"零件编号"},
        {131, u"No IGA or BMF files found for the part.\n Part Name:",
         u"IGA・BMFファイルが部品にありません。\n部品名称", u"未发现零件的IGA或BMF文件\n零件名称:"},
        {139, u"Please enter value within the range [1-99999]", u"入力範囲は1～99999です。",
         u"请输入在[1-99999]范围内的值. "},
        {32774, u"NCT", u"NCT", u"NCT"},
        {32776, u"MARVEN", u"MARVEN", u"MARVEN"},
        {101, u"", u"", u""},
        {32777, u"", u"", u""},
        {0, u"", u"", u""},
        {-1, u"", u"", u""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.number);
        EXPECT_EQ(StringIn(1, row.number), row.english);
        EXPECT_EQ(StringIn(2, row.number), row.japanese);
        EXPECT_EQ(StringIn(3, row.number), row.chinese);
    }
}

TEST(LocalStrings, HaveTheSameNumbersInEveryLanguage)
{
    for (std::int32_t number = 0; number <= 0xFFFF; ++number) {
        const bool present = number == 100 || (number >= 102 && number <= 139) || (number >= 32773 && number <= 32776);
        for (const std::int32_t language : {1, 2, 3}) {
            ASSERT_EQ(!StringIn(language, number).empty(), present) << number << " in language " << language;
        }
    }
}

TEST(LocalStrings, LieInBlocksOfSixteen)
{
    for (const std::uint32_t language : {1033U, 1041U, 2052U}) {
        for (std::uint32_t block = 0; block < 4100; ++block) {
            const bool present = (block >= 7 && block <= 9) || block == 2049;
            ASSERT_EQ(!StringBlock(block, language).empty(), present) << block;
        }
    }
    EXPECT_TRUE(StringBlock(7, 1036).empty());
}

#ifndef _WIN32 // there the system resolves the neutral language
TEST(LocalStrings, NeutralLanguageFollowsTheUsersLocale)
{
    struct Row {
        const char* all;
        const char* messages;
        const char* lang;
        std::int32_t same_as;
    };
    const Row rows[] = {{"ja_JP.UTF-8", "", "", 2}, {"", "zh_CN.UTF-8", "ja_JP", 3}, {"", "", "zh_SG", 3},
                        {"zh_TW.UTF-8", "", "", 1}, {"C.UTF-8", "", "ja_JP", 1},     {"", "", "", 1},
                        {"", "", "de_DE", 1}};
    for (const Row& row : rows) {
        setenv("LC_ALL", row.all, 1);
        setenv("LC_MESSAGES", row.messages, 1);
        setenv("LANG", row.lang, 1);
        for (const std::int32_t language_id : {0, 4, -1}) {
            EXPECT_EQ(StringIn(language_id, 128), StringIn(row.same_as, 128))
                << row.all << row.messages << row.lang << " with " << language_id;
        }
    }
}
#endif

} // namespace
} // namespace partkeep
