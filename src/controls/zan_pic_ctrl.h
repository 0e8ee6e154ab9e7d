// The picture control that shows a PNG preview from a file: a member per operation of its contract. It stands in
// the selection dialog's template and is attached once that window exists.
#pragma once

#include "controls/control_wrapper.h"

namespace partkeep {

inline constexpr ClassId picture_control_class_id{
    0xDBE2F81A, 0xE533, 0x4E67, {0xA6, 0xCD, 0xA0, 0x5F, 0x41, 0xA9, 0x62, 0x7E}};

enum class PictureOperation : std::int32_t {
    ImagePath = 1, // property
    Second = 2,
    AboutBox = -552,
};

class CzXZanPicCtrl : public CControlWrapper {
public:
    std::u16string GetImagePath();

    // Full path of a picture file, shown at once, or empty text for no picture. The control closes the file before
    // this returns. A file that is missing or no picture leaves the control empty; nothing is reported.
    void SetImagePath(std::u16string_view path);

    std::int16_t SecondOperation(void* object);
    void AboutBox();
};

} // namespace partkeep
