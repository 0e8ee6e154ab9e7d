// Stands in for the two closed controls: in-process class objects under their class ids, whose controls have real
// windows and play from one script. Linked into a test, or served by a library of its own.
#pragma once

#include "tests/support/scripted_control.h"

#include <windows.h>

#include <oaidl.h>

namespace partkeep {

struct StandIn {
    StandIn(); // starts OLE on this thread; one at a time
    ~StandIn();

    enum Kind { Browser, Picture };
    void Offer(Kind kind); // both are at the beginning
    void Withdraw(Kind kind);

    Recorder recorder; // each call that reached a control, with a note where its types were not the contract's
    ControlScript script{recorder};
    HRESULT callStatus = S_OK; // of the browser's next call; a refused one answers nothing
    int controls = 0;          // of the component model, alive
    HWND browserWindow = nullptr;
    std::function<void(DISPID)> fire;       // an event, from the browser that lives
    std::function<VARIANT(DISPID)> ambient; // a property, as the browser that lives gets it from its container
    DWORD offered[2]{};                     // cookies of the class objects, 0 for none

    static void Pump(); // what is in this thread's queue

    static constexpr int row_height = 20; // a click on row i selects entry i of the list; the right button selects none
};

} // namespace partkeep
