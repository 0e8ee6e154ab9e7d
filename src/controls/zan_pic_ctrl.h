// The picture control that shows a PNG preview from a file: a member per operation of its contract. It stands in
// the selection dialog's template and is attached once that window exists.
#pragma once

#include "controls/control_wrapper.h"
#include "controls/picture_contract.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace partkeep {

class CzXZanPicCtrl : public CControlWrapper {
public:
    std::u16string GetImagePath() { return InvokeHelper<picture::GetImagePath>(); }

    // Full path of a picture file, shown at once, or empty text for no picture. The control closes the file before
    // this returns. A file that is missing or no picture leaves the control empty; nothing is reported.
    void SetImagePath(std::u16string_view path) { InvokeHelper<picture::SetImagePath>(path); }

    std::int16_t SecondOperation(void* object)
    {
        return InvokeHelper<picture::SecondOperation>(static_cast<AutomationObject*>(object));
    }
    void AboutBox() { InvokeHelper<picture::AboutBox>(); }
};

} // namespace partkeep
