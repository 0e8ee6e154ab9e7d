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

constexpr std::uint32_t english = 1033;
constexpr std::uint32_t japanese = 1041;
constexpr std::uint32_t simplified_chinese = 2052;
constexpr std::uint32_t neutral = 1024;

using BlockKey = std::pair<std::uint32_t, std::uint32_t>; // block, language
using BlockTexts = std::array<std::u16string_view, 16>;

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
        return japanese;
    }
    const bool simplified = locale == "zh" || locale.starts_with("zh_CN") || locale.starts_with("zh_SG") ||
                            locale.starts_with("zh_Hans") || locale.starts_with("zh.");
    return simplified ? simplified_chinese : english;
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
        const std::uint32_t block = number / 16 + 1;
        texts[{block, english}][number % 16] = row.english;
        texts[{block, japanese}][number % 16] = row.japanese;
        texts[{block, simplified_chinese}][number % 16] = row.chinese;
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
    const auto found = blocks.find({block, language == neutral ? LanguageOfUser() : language});
    if (found == blocks.end()) {
        return {};
    }
    return found->second;
}

} // namespace partkeep
