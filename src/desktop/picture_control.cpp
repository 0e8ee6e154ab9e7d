#include "desktop/picture_control.h"

#include "desktop/spoken_role.h"
#include "partlibrary/library/library_text.h"
#include "platform/files.h"
#include "platform/text.h"

#include <QFile>
#include <QPainter>
#include <QStyleOptionFocusRect>

namespace partkeep {

namespace {

constexpr qint64 max_file_bytes = 64LL * 1024 * 1024; // a preview, not an archive
constexpr int focus_margin = 1;

QImage ReadPicture(std::u16string_view path)
{
    QFile file(FromWide(WidenText(NativePath(path), utf8_code_page)));
    if (path.empty() || !FileExists(path) || !file.open(QIODevice::ReadOnly) || file.size() > max_file_bytes) {
        return {};
    }
    return QImage::fromData(file.read(max_file_bytes), "PNG");
}

} // namespace

CPictureWidget::CPictureWidget(QWidget* parent) : QWidget(parent)
{
    setFocusPolicy(Qt::TabFocus);
    SetSpokenRole(*this, QAccessible::Graphic);
}

void CPictureWidget::SetImage(const QImage& image)
{
    image_ = image;
    update();
}

void CPictureWidget::paintEvent(QPaintEvent*)
{
    QPainter canvas(this);
    if (!image_.isNull()) {
        QRect area(QPoint(), image_.size().scaled(size(), Qt::KeepAspectRatio));
        area.moveCenter(rect().center());
        canvas.setRenderHint(QPainter::SmoothPixmapTransform);
        canvas.drawImage(area, image_);
    }
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.rect = rect().adjusted(focus_margin, focus_margin, -focus_margin, -focus_margin);
        option.state |= QStyle::State_KeyboardFocusChange;
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &canvas, this);
    }
}

ControlResult CPictureControl::Invoke(std::int32_t dispatch_id, InvokeKind kind,
                                      std::span<const ControlArgument> arguments, ControlType result)
{
    return Dispatch(picture::contract, MemberCalls<CPictureControl>{*this}, {dispatch_id, kind, arguments, result});
}

void CPictureControl::SetImagePath(std::u16string_view path)
{
    path_ = path;
    if (widget_) {
        widget_->SetImage(ReadPicture(path));
    }
}

} // namespace partkeep
