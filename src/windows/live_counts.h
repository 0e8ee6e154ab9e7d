// What the windows layer holds at the moment, so that a test can see it come back to zero: the system's own
// counters are not to be had everywhere, and a drawing object that leaks is found too late.
#pragma once

#include <atomic>

namespace partkeep {

struct LiveCounts {
    std::atomic<int> windows{0};     // dialogs, panels and sites
    std::atomic<int> gdi_objects{0}; // bitmaps
    std::atomic<int> com_objects{0}; // sites and event sinks
};

[[nodiscard]] inline LiveCounts& TheLiveCounts()
{
    static LiveCounts counts;
    return counts;
}

} // namespace partkeep
