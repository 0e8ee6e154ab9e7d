// Texts and numbers on their way between a host's memory and the core's types.
#pragma once

#include "platform/windows/wide.h"

#include <windows.h>

#include <oleauto.h>

#include <cstdint>
#include <string>

namespace partkeep {

// A host's text as it counts itself, NULs inside included; a null one is empty.
[[nodiscard]] inline std::u16string InputText(BSTR text)
{
    return text != nullptr ? FromWide({text, SysStringLen(text)}) : std::u16string();
}

// Lends the core a text for the length of a call, and hands it to the host afterwards if the core wrote to it.
// What the host had there before is its own and not freed. Whether it was written is told by a mark that no text
// of the core begins with.
class TextOutput {
public:
    explicit TextOutput(BSTR* target) : target_(target) {}
    ~TextOutput()
    {
        if (target_ != nullptr && text_ != Untouched()) {
            *target_ =
                SysAllocStringLen(reinterpret_cast<const wchar_t*>(text_.data()), static_cast<UINT>(text_.size()));
        }
    }
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;

    operator std::u16string*() { return target_ != nullptr ? &text_ : nullptr; }

private:
    static std::u16string_view Untouched() { return u"\xFFFF\xFFFE"; } // noncharacters

    BSTR* target_;
    std::u16string text_{Untouched()};
};

// The same 32 bits under the two names that the platforms have for them.
[[nodiscard]] inline std::int32_t* NumberOutput(LONG* number)
{
    static_assert(sizeof(LONG) == sizeof(std::int32_t));
    return reinterpret_cast<std::int32_t*>(number);
}

} // namespace partkeep
