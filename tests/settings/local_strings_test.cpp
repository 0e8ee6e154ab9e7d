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
    const std::tuple<std::int32_t, std::u16string, std::u16string, std::u16string> rows[] = {
        {100, u"Kolvyn PartkeepRead", u"Kolvyn Partkeep読み込み", u"读取Kolvyn Partkeep"},
        {122, u"Part NO.", u"パーツ員数\n", u"零件编号"},
        {131, u"No IGA or BMF files found for the part.\n Part Name:",
         u"IGA・BMFファイルが部品にありません。\n部品名称", u"未发现零件的IGA或BMF文件\n零件名称:"},
        {-1, u"", u"", u""},
    };
    for (const auto& [number, english, japanese, chinese] : rows) {
        EXPECT_EQ(StringIn(1, number), english);
        EXPECT_EQ(StringIn(2, number), japanese);
        EXPECT_EQ(StringIn(3, number), chinese);
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
    const std::tuple<const char*, const char*, const char*, std::int32_t> rows[] = {
        {"ja_JP.UTF-8", "", "", 2},  {"", "zh_CN.UTF-8", "ja_JP", 3},
        {"", "", "zh_SG", 3},        {"zh_TW.UTF-8", "ja_JP", "", 1},
        {"C.UTF-8", "", "ja_JP", 1}, {"jam_JM", "", "", 1},
        {"", "", "de_DE", 1}};
    for (const auto& [all, messages, lang, same_as] : rows) {
        setenv("LC_ALL", all, 1);
        setenv("LC_MESSAGES", messages, 1);
        setenv("LANG", lang, 1);
        for (const std::int32_t language_id : {0, 4, -1}) {
            EXPECT_EQ(StringIn(language_id, 128), StringIn(same_as, 128)) << all << lang;
        }
    }
}
#endif

} // namespace
} // namespace partkeep
