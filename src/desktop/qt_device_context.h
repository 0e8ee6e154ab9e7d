// The drawing calls on a QPainter. Bitmaps are drawn straight from their bytes, without smoothing, for as many
// pixels as the painter can show. Borrows the painter.
#pragma once

#include "platform/graphics.h"

#include <QPainter>

namespace partkeep {

class CQtDeviceContext final : public IDeviceContext {
public:
    explicit CQtDeviceContext(QPainter& painter) : painter_(painter) {}

    // Kept and given back only: a painter has no palette.
    PaletteHandle SelectPalette(PaletteHandle palette, bool background) override;
    void SetStretchBltMode(int) override {} // always as stretch_mode_color_on_color

    // 0 for a first line other than 0: parts of a bitmap's bytes are not drawn.
    int SetDIBitsToDevice(int target_x, int target_y, int width, int height, int source_x, int source_y,
                          unsigned first_line, unsigned line_count, const DibView& bitmap) override;
    // A target pixel takes the source pixel under its centre; at a tie, the right and the upper one.
    int StretchDIBits(const Rect& target, const Rect& source, const DibView& bitmap) override;
    void FillSolidRect(const Rect& area, ColorRef color) override;
    // The application's window colour for system_color_3d_face, black for others.
    [[nodiscard]] ColorRef GetSysColor(int index) const override;

private:
    QPainter& painter_;
    PaletteHandle selected_ = nullptr;
};

} // namespace partkeep
