#include "partlibrary/library/copy_steps.h"

#include "partlibrary/library/file_kinds.h"

#include <algorithm>
#include <iterator>

namespace partkeep {

namespace {

constexpr std::chrono::seconds right_after{2};

} // namespace

bool CCopySteps::Agree(PartId part, SlotSet slots, std::span<const PartFile> now)
{
    if ((slots & SlotsOfMask(-1)) == 0) {
        return true;
    }
    const auto at = std::chrono::steady_clock::now();
    const bool goes_on = part == part_ && (slots_ & slots) == 0 && at - at_ < right_after;
    if (!goes_on) {
        copied_.clear();
        slots_ = 0;
    }
    const bool same = std::all_of(copied_.begin(), copied_.end(), [now](const PartFile& old) {
        return std::find(now.begin(), now.end(), old) != now.end();
    });
    part_ = same ? part : 0; // the next step begins anew
    slots_ |= slots;
    at_ = at;
    std::copy_if(now.begin(), now.end(), std::back_inserter(copied_),
                 [slots](const PartFile& file) { return (slots & SetOf(file.slot)) != 0; });
    return same;
}

LibraryProblem CCopySteps::Trouble()
{
    return {LibraryFault::Busy, {}, QStringLiteral("the part was changed meanwhile")};
}

} // namespace partkeep
