#include "settings/local_strings.h"

#include "platform/string_resource.h"
#include "settings/process_values.h"

#include <span>

namespace partkeep {

namespace {

std::uint32_t LanguageOf(std::int32_t language_id)
{
    switch (language_id) {
    case 1:
        return english_language;
    case 2:
        return japanese_language;
    case 3:
        return chinese_language;
    default:
        return neutral_language;
    }
}

// Steps over the entries in front of `index`; a block cut short gives empty text.
std::u16string EntryOfBlock(std::span<const char16_t> block, std::uint32_t index)
{
    for (std::uint32_t entry = 0; !block.empty(); ++entry) {
        const std::size_t length = block.front();
        block = block.subspan(1);
        if (length > block.size()) {
            return {};
        }
        if (entry == index) {
            return {block.begin(), block.begin() + static_cast<std::ptrdiff_t>(length)};
        }
        block = block.subspan(length);
    }
    return {};
}

} // namespace

std::u16string LoadLocalString(std::int32_t number)
{
    if (number < 0) {
        return {};
    }
    const auto unsigned_number = static_cast<std::uint32_t>(number);
    const std::uint32_t language = LanguageOf(TheProcessValues().languageId);
    return EntryOfBlock(StringBlock(unsigned_number / strings_in_block + 1, language),
                        unsigned_number % strings_in_block);
}

std::u16string LoadLocalString(LocalString number)
{
    return LoadLocalString(static_cast<std::int32_t>(number));
}

} // namespace partkeep
