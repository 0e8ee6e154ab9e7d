#include "tests/desktop/x_close.h"

#include <X11/Xlib.h>

namespace partkeep {

void AskToClose(unsigned long window)
{
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return;
    }
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    XSendEvent(display, window, False, NoEventMask, &event);
    XCloseDisplay(display); // waits for the server
}

} // namespace partkeep
