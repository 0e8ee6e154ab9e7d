// Whoever copies a part in steps, its own data first and the machine's right after, as a load does, gets files of one
// state of it, or is told.
#pragma once

#include "partlibrary/library/part_library.h"

#include <chrono>
#include <span>
#include <vector>

namespace partkeep {

class CCopySteps {
public:
    // Whether what this step has copied and what the steps right before it have goes together: `now` are all files that
    // the part has by this step. Pictures go with any.
    [[nodiscard]] bool Agree(PartId part, SlotSet slots, std::span<const PartFile> now);

    [[nodiscard]] static LibraryProblem Trouble(); // for where they do not

private:
    PartId part_ = 0;
    SlotSet slots_ = 0;
    std::vector<PartFile> copied_;
    std::chrono::steady_clock::time_point at_;
};

} // namespace partkeep
