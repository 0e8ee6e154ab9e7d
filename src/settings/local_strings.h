// The texts of the system by number, in the language that the host chose for the process.
#pragma once

#include <cstdint>
#include <string>

namespace partkeep {

// Numbers of the texts that the system shows; the toolbar's commands are their tool tips' numbers.
enum class LocalString : std::int32_t {
    MessageTitle = 100,
    Image3D = 110,
    Image2D = 111,
    DisplayUnit = 112,
    PartsName = 113,
    Comment = 114,
    Cancel = 117,
    Metric = 118,
    Inch = 119,
    InputQuantity = 120,
    Add = 121,
    PartNumber = 122,
    Ok = 123,
    TheSelectedPart = 124,
    IsAlreadyAdded = 125,
    TooManyParts = 126,
    PartDoesNotExist = 127,
    SelectParts = 128,
    DigitsOnly = 129,
    ServerNotConnected = 130,
    NoFilesFound = 131,
    SelectedParts = 133,
    Remove = 134,
    ChangeQuantity = 135,
    Path = 136,
    PartName = 137,
    Quantity = 138,
    QuantityRange = 139,
};

// The string in the language of the process's languageId, looked up at each call; empty when there is none.
[[nodiscard]] std::u16string LoadLocalString(std::int32_t number);
[[nodiscard]] std::u16string LoadLocalString(LocalString number);

// Not in the table: they read the same in every language.
inline constexpr char16_t cannot_be_started_text[] = u"Partkeep cannot be started";
inline constexpr char16_t cannot_be_started_title[] = u"Kolvyn";

} // namespace partkeep
