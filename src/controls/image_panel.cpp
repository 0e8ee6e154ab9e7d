#include "controls/image_panel.h"

#include "controls/dib_helpers.h"

#include <optional>
#include <utility>

namespace partkeep {

namespace {

// The whole bitmap as a rectangle; nothing for a block that holds none.
std::optional<Rect> WholeBitmap(HDIB block)
{
    const CLockedDib dib(block);
    const auto bytes = dib.From(dib_file_header_bytes);
    if (!MakeDibView(bytes)) {
        return {};
    }
    const auto figures = ReadDibFigures(bytes);
    return Rect{0, 0, figures->width, figures->height};
}

} // namespace

void CImagePanel::Attach(std::unique_ptr<IPanelWindow> window, Guard guard)
{
    window_ = std::move(window);
    if (window_ != nullptr) {
        PanelPainter painter = [this](IDeviceContext& context) { OnPaint(context); };
        window_->SetPainter(guard != nullptr ? guard(std::move(painter)) : std::move(painter));
    }
}

void CImagePanel::Show(bool visible)
{
    if (window_ != nullptr) {
        window_->Show(visible);
    }
}

void CImagePanel::SetClientExtent(int side)
{
    if (window_ == nullptr) {
        return;
    }
    Rect area = window_->ClientRect();
    area.right = side;
    area.bottom = side;
    window_->Move(window_->MapToDialog(area));
}

int CImagePanel::SetImage(HDIB block)
{
    image = block;
    if (block != nullptr && window_ != nullptr) {
        window_->Invalidate(true);
    }
    return 1;
}

void CImagePanel::OnPaint(IDeviceContext& context) const
{
    if (window_ == nullptr) {
        return;
    }
    const Rect client = window_->ClientRect();
    const auto source = image != nullptr ? WholeBitmap(image) : std::nullopt;
    if (!source) {
        context.FillSolidRect(client, context.GetSysColor(system_color_3d_face));
        return;
    }
    PaintDIB(context, &client, image, &*source, nullptr);
}

} // namespace partkeep
