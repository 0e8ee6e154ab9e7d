// The contract between the component and its picture control, which shows a PNG file: identity and operations.
#pragma once

#include "controls/typed_contract.h"

#include <cstdint>
#include <string>
#include <tuple>

namespace partkeep {

inline constexpr ClassId picture_control_class_id{
    0xDBE2F81A, 0xE533, 0x4E67, {0xA6, 0xCD, 0xA0, 0x5F, 0x41, 0xA9, 0x62, 0x7E}};

// Two of them get and set one property.
// clang-format off
#define PARTKEEP_PICTURE_OPERATIONS(ROW)                                                                               \
    ROW(1, PropertyGet, GetImagePath, std::u16string())                                                                \
    ROW(1, PropertyPut, SetImagePath, void(ControlText path))                                                          \
    ROW(2, Method, SecondOperation, std::int16_t(AutomationObject* object))                                            \
    ROW(-552, Method, AboutBox, void())
// clang-format on

namespace picture {
PARTKEEP_PICTURE_OPERATIONS(PARTKEEP_ROW_TYPE)
inline constexpr std::tuple contract{PARTKEEP_PICTURE_OPERATIONS(PARTKEEP_ROW_ELEMENT)};
} // namespace picture

} // namespace partkeep
