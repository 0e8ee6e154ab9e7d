// What the stand-in controls play from, shared with a test in the same process: one script for both class ids.
#pragma once

#include "tests/support/scripted_control.h"

#include <windows.h>

namespace partkeep {

struct StandIn {
    StandIn();

    Recorder recorder; // each call that reached a control, with a note where its types were not the contract's
    ControlScript script{recorder};
    bool fireInsideCalls = false;
    int controls = 0; // of the component model, alive
    HWND browserWindow = nullptr;
    void (*fire)(long dispatch_id) = nullptr; // an event of the browser that lives
};

inline constexpr int stand_in_row_height = 20; // a click on row i selects entry i of the list

// Exported as "FreshStandIn": what it gives has its first state again. No control may live.
using StandInFunction = StandIn* (*)();

} // namespace partkeep
