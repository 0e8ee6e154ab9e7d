// The part of the component that draws: the only one that needs a graphical toolkit. It is a library of its own, loaded
// when a window or a message on a screen is due, so that a host without a screen never carries it.
#pragma once

#include "platform/dialog_window.h"
#include "platform/messages.h"
#include "platform/registry.h"

namespace partkeep {

// Both services make sure of the toolkit's application, on the calling thread, which must have a screen. The
// application goes with the last of these objects that made use of it.
class IWindowsPart {
public:
    virtual ~IWindowsPart() = default;

    [[nodiscard]] virtual IMessages& Messages() = 0;
    [[nodiscard]] virtual IDialogWindows& Windows() = 0;
};

// What the library exports, under the name below: a new object of the caller's, or null when memory has run out.
// `registry` must outlive it.
using MakeWindowsPart = IWindowsPart*(const IRegistry& registry);
inline constexpr char make_windows_part_name[] = "partkeep_make_windows_part";

// In the folder `parts_folder` beside the component's library: this library, and the program that tries the screen.
inline constexpr char parts_folder[] = "partkeep-read";
inline constexpr char windows_part_file[] = "libpartkeep-read-windows.so";
inline constexpr char screen_probe_file[] = "partkeep-read-screen";

// A property of the toolkit's application, true once its display server has gone: it cannot show anything any more.
inline constexpr char screen_lost_property[] = "partkeepScreenLost";

// The exit code by which that program says that the toolkit has opened a screen that somebody sees. No signal, no
// shell and no loader ends a program with it.
inline constexpr int screen_found_code = 42;

} // namespace partkeep
