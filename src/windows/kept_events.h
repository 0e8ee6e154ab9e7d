// What waits for the end of a control's calls.
#pragma once

#include "windows/site_window.h"

#include <algorithm>
#include <vector>

namespace partkeep {

// The events that a control fires while it is called. They must outlast the call: a control that pumps messages in it
// would dispatch whatever was posted at once.
class KeptEvents {
public:
    // One more call runs for as long as this lives. Behind the outermost one the events are on their way again.
    class Call {
    public:
        Call(KeptEvents& events, const HWND& window) : events_(events), window_(window) { ++events_.calls_; }
        ~Call()
        {
            if (--events_.calls_ == 0) {
                events_.PostTo(window_);
            }
        }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        KeptEvents& events_;
        const HWND& window_; // null by then where the control is closed in the call
    };

    // False when no call runs. Several of a kind become one.
    bool Keep(std::int32_t event)
    {
        if (calls_ > 0 && std::ranges::find(events_, event) == events_.end()) {
            events_.push_back(event);
        }
        return calls_ > 0;
    }

private:
    void PostTo(HWND window)
    {
        for (const std::int32_t event : events_) {
            PostLateEvent(window, event);
        }
        events_.clear();
    }

    std::vector<std::int32_t> events_;
    int calls_ = 0;
};

} // namespace partkeep
