#include "windows/waiting_input.h"

#include <windows.h>

namespace partkeep {

// A request to quit comes whatever range is asked for, and comes once.
void DropWaitingInput()
{
    constexpr UINT ranges[][2]{
        {WM_KEYFIRST, WM_KEYLAST}, {WM_NCMOUSEMOVE, WM_NCXBUTTONDBLCLK}, {WM_MOUSEFIRST, WM_MOUSELAST}};
    MSG message;
    bool quits = false;
    WPARAM quit_code = 0;
    for (const auto& [first, last] : ranges) {
        while (PeekMessageW(&message, nullptr, first, last, PM_REMOVE)) {
            if (message.message == WM_QUIT) {
                quits = true;
                quit_code = message.wParam;
            }
        }
    }
    if (quits) {
        PostQuitMessage(static_cast<int>(quit_code));
    }
}

} // namespace partkeep
