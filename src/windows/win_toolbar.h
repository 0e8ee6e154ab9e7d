// The tool bar of a dialog window: one of the system's common controls at the top of the client area. Borrows the place
// of the window's handle, which is null while none exists.
#pragma once

#include "platform/dialog_window.h"

#include <windows.h>

#include <map>

namespace partkeep {

class CWinToolbar final : public IToolbar {
public:
    // `module` holds the bar's bitmap.
    CWinToolbar(HINSTANCE module, const HWND& window) : module_(module), window_(window) {}

    bool CreateToolbar(const ToolbarTemplate& toolbar) override;
    [[nodiscard]] Rect ClientRectBesideToolbar() const override;
    void MoveAllControls(int dx, int dy) override;
    void PlaceToolbar() override;
    void EnableToolTips() override;
    void PressTool(int command, bool pressed) override;

    // As PressTool has left them.
    void ShowPressedTools();

    // When its window has gone.
    void Forget();

private:
    int AddButtons(const ToolbarTemplate& toolbar);

    HINSTANCE module_;
    const HWND& window_;
    HWND bar_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    std::map<int, bool> pressed_; // by command
};

} // namespace partkeep
