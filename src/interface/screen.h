// Decides whether a window can be shown, without making the toolkit's application: where its screen cannot be opened,
// the toolkit ends the process, and the process is the host's.
#pragma once

#include "interface/held_screen.h"
#include "interface/windows_library.h"

#include <memory>
#include <string_view>

namespace partkeep {

struct ScreenAnswer {
    std::u16string_view problem;       // why no window can be shown on this thread now; empty: one can
    std::unique_ptr<CHeldScreen> held; // until the component's application has opened the screen itself
};

// Where the host has an application, its kind and thread decide. Otherwise the component would make one, and a
// program of its own tries the screen first: 2 s at most. A screen that was found counts for the application that is
// made then; display servers go, so it is tried again for the next one. That there is none is kept for the process, and
// asked again only where the environment names another screen, or after a minute where no answer came: slow machines
// get warm.
[[nodiscard]] ScreenAnswer FindScreen(const CWindowsLibrary& library);

} // namespace partkeep
