#include "settings/local_strings.h"

#include "platform/string_resource.h"
#include "settings/process_values.h"

#include <span>

namespace partkeep {

namespace {

// Language ids are sublanguage * 1024 + primary language.
std::uint32_t LanguageOf(std::int32_t language_id)
{
    switch (language_id) {
    case 1:
        return 1 * 1024 + 9;
    case 2:
        return 1 * 1024 + 17;
    case 3:
        return 2 * 1024 + 4;
    default:
        return 1 * 1024 + 0;
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
    return EntryOfBlock(StringBlock(unsigned_number / 16 + 1, language), unsigned_number % 16);
}

std::u16string LoadLocalString(LocalString number)
{
    return LoadLocalString(static_cast<std::int32_t>(number));
}

} // namespace partkeep
