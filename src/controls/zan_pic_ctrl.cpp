#include "controls/zan_pic_ctrl.h"

namespace partkeep {

namespace {

constexpr std::int32_t Id(PictureOperation operation)
{
    return static_cast<std::int32_t>(operation);
}

} // namespace

std::u16string CzXZanPicCtrl::GetImagePath()
{
    return InvokeText(Id(PictureOperation::ImagePath), {}, InvokeKind::PropertyGet);
}

void CzXZanPicCtrl::SetImagePath(std::u16string_view path)
{
    InvokeNone(Id(PictureOperation::ImagePath), {Text(path)}, InvokeKind::PropertyPut);
}

std::int16_t CzXZanPicCtrl::SecondOperation(void* object)
{
    return InvokeInt16(Id(PictureOperation::Second), {Unknown(object)});
}

void CzXZanPicCtrl::AboutBox()
{
    InvokeNone(Id(PictureOperation::AboutBox));
}

} // namespace partkeep
