// String blocks without a resource section: the compiled-in table, packed into blocks at the first request.

#include "platform/string_resource.h"

#include "resources/string_table.h"

#include <array>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace partkeep {

namespace {

using BlockKey = std::pair<std::uint32_t, std::uint32_t>; // block, language
using BlockTexts = std::array<std::u16string_view, strings_in_block>;

std::string_view UserLocale()
{
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return value;
        }
    }
    return {};
}

// A Chinese locale counts only where it is written in simplified characters: a reader of the other script is
// better served by English.
std::uint32_t LanguageOfUser()
{
    const std::string_view locale = UserLocale();
    if (locale.substr(0, locale.find_first_of("_.@-")) == "ja") {
        return japanese_language;
    }
    const bool simplified = locale == "zh" || locale.starts_with("zh_CN") || locale.starts_with("zh_SG") ||
                            locale.starts_with("zh_Hans") || locale.starts_with("zh.");
    return simplified ? chinese_language : english_language;
}

std::u16string PackBlock(const BlockTexts& texts)
{
    std::u16string packed;
    for (const std::u16string_view text : texts) {
        packed += static_cast<char16_t>(text.size());
        packed += text;
    }
    return packed;
}

std::map<BlockKey, std::u16string> PackTable()
{
    std::map<BlockKey, BlockTexts> texts;
    for (const StringRow& row : StringTable()) {
        const auto number = static_cast<std::uint32_t>(row.number);
        const std::uint32_t block = number / strings_in_block + 1;
        texts[{block, english_language}][number % strings_in_block] = row.english;
        texts[{block, japanese_language}][number % strings_in_block] = row.japanese;
        texts[{block, chinese_language}][number % strings_in_block] = row.chinese;
    }
    std::map<BlockKey, std::u16string> packed;
    for (const auto& [key, block] : texts) {
        packed[key] = PackBlock(block);
    }
    return packed;
}

} // namespace

std::span<const char16_t> StringBlock(std::uint32_t block, std::uint32_t language)
{
    static const std::map<BlockKey, std::u16string> blocks = PackTable();
    const auto found = blocks.find({block, language == neutral_language ? LanguageOfUser() : language});
    if (found == blocks.end()) {
        return {};
    }
    return found->second;
}

} // namespace partkeep
