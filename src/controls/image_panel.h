// The window that shows one bitmap, scaled to fill it, or its background. The panel owns its window and only
// borrows the bitmap's block: whoever holds the block takes it away before freeing it. All on the dialog's thread.
#pragma once

#include "controls/dib_view.h"
#include "platform/dialog_window.h"
#include "platform/graphics.h"

#include <memory>

namespace partkeep {

class CImagePanel {
public:
    CImagePanel() = default;
    CImagePanel(const CImagePanel&) = delete; // its window paints by its address
    CImagePanel& operator=(const CImagePanel&) = delete;

    HDIB image = nullptr; // changed by SetImage only

    // Takes the window over and paints it from now on; with null, and after Detach, nothing is shown. The window
    // must go before its dialog does. `guard` makes of the painter what the window may call.
    using Guard = PanelPainter (*)(PanelPainter);
    void Attach(std::unique_ptr<IPanelWindow> window, Guard guard = nullptr);
    void Detach() { window_.reset(); }

    void Show(bool visible);
    // Makes the client area a square of this side; its top left corner stays.
    void SetClientExtent(int side);

    // Always 1. A null handle takes the image away without a repaint: that is the caller's.
    int SetImage(HDIB block);

    // A bitmap that does not fit its block, or whose block has been freed, counts as none.
    void OnPaint(IDeviceContext& context) const;

private:
    std::unique_ptr<IPanelWindow> window_;
};

} // namespace partkeep
