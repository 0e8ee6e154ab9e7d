// The places in a host's memory that one operation writes to: all of them or none. The core writes into variables
// that are lent to it for the call; what has come goes to the host when everything that takes memory is made.
#pragma once

#include "platform/windows/wide.h"

#include <windows.h>

#include <oleauto.h>

#include <array>
#include <cstdint>
#include <string>

namespace partkeep {

// A host's text as it counts itself, NULs inside included; a null one is empty.
[[nodiscard]] inline std::u16string InputText(BSTR text)
{
    return text != nullptr ? FromWide({text, SysStringLen(text)}) : std::u16string();
}

class CHostOutputs {
public:
    enum class Start { Untouched, Empty }; // Empty: no text and 0 from the beginning, whatever comes then

    explicit CHostOutputs(Start start) : start_(start) {}
    CHostOutputs(const CHostOutputs&) = delete;
    CHostOutputs& operator=(const CHostOutputs&) = delete;

    // Up to ten texts and one number of each kind. Null for a null place, which is skipped. What the host had in a
    // place before is its own and not freed.
    [[nodiscard]] std::u16string* Lend(BSTR* place);
    [[nodiscard]] std::int32_t* Lend(LONG* place);
    [[nodiscard]] double* Lend(double* place);

    // False, with nothing written, where there is no memory for a text.
    bool HandOver();

private:
    struct Text {
        BSTR* place = nullptr;
        std::u16string value{};
        BSTR made = nullptr;
    };

    bool MakeTexts();

    Start start_;
    std::array<Text, 10> texts_{};
    std::size_t text_count_ = 0;
    LONG* number_place_ = nullptr; // 32 bits too, yet another type than the core's
    std::int32_t number_ = 0;
    double* real_place_ = nullptr;
    double real_ = 0.0;
};

} // namespace partkeep
