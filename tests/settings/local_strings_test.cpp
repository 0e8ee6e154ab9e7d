#include "settings/local_strings.h"

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
    const struct {
        std::int32_t number;
        std::u16string english, japanese, chinese;
    } rows[] = {
        {100, u"Kolvyn PartkeepRead", u"Kolvyn Partkeep読み込み", u"读取Kolvyn Partkeep"},
        {122, u"Part NO.", u"パーツ員数\n", u"零件编号"},
        {131, u"No IGA or BMF files found for the part.\n Part Name:",
         u"IGA・BMFファイルが部品にありません。\n部品名称", u"未发现零件的IGA或BMF文件\n零件名称:"},
        {-1, u"", u"", u""},
    };
    for (const auto& row : rows) {
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

#ifndef _WIN32 // there the system resolves the neutral language
TEST(LocalStrings, NeutralLanguageFollowsTheUsersLocale)
{
    const struct {
        const char *all, *messages, *lang;
        std::int32_t same_as;
    } rows[] = {{"ja_JP.UTF-8", "", "", 2}, {"", "zh_CN.UTF-8", "ja_JP", 3}, {"", "", "zh_SG", 3},
                {"zh_TW.UTF-8", "", "", 1}, {"C.UTF-8", "", "ja_JP", 1},     {"", "", "de_DE", 1}};
    for (const auto& row : rows) {
        setenv("LC_ALL", row.all, 1);
        setenv("LC_MESSAGES", row.messages, 1);
        setenv("LANG", row.lang, 1);
        for (const std::int32_t language_id : {0, 4, -1}) {
            EXPECT_EQ(StringIn(language_id, 128), StringIn(row.same_as, 128)) << row.all << row.lang;
        }
    }
}
#endif

} // namespace
} // namespace partkeep
