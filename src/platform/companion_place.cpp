#include "platform/companion_place.h"

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <vector>

namespace partkeep {

namespace {

constexpr int gap = 8;

// One direction of a rectangle.
struct Stretch {
    int from;
    int to;
};

Stretch Across(const Rect& area)
{
    return {area.left, area.right};
}

Stretch Down(const Rect& area)
{
    return {area.top, area.bottom};
}

// Where the companion may begin in one direction: wherever it would touch an edge of something. In between it would
// hide no less. What comes first is preferred.
class CStarts {
public:
    CStarts(Stretch screen, int length)
        : length_(length), first_(screen.from), last_(std::max(screen.from, screen.to - length))
    {
    }

    void AddBeside(Stretch area)
    {
        Add(area.to + gap);
        Add(area.from - gap - length_);
    }
    void AddInside(Stretch area)
    {
        Add(area.from);
        Add(area.to - length_);
    }
    void AddEdgesOfScreen()
    {
        Add(last_);
        Add(first_);
    }
    [[nodiscard]] const std::vector<int>& All() const { return starts_; }

private:
    void Add(int start)
    {
        if (start >= first_ && start <= last_) {
            starts_.push_back(start);
        }
    }

    int length_;
    int first_; // on the screen
    int last_;
    std::vector<int> starts_;
};

std::int64_t SharedArea(const Rect& one, const Rect& other)
{
    const int width = std::min(one.right, other.right) - std::max(one.left, other.left);
    const int height = std::min(one.bottom, other.bottom) - std::max(one.top, other.top);
    return width > 0 && height > 0 ? std::int64_t{width} * height : 0;
}

} // namespace

Rect CompanionPlace(const Rect& owner, const Rect& screen, int width, int height, std::span<const Rect> to_stay_visible)
{
    CStarts across(Across(screen), width);
    CStarts down(Down(screen), height);
    across.AddBeside(Across(owner));
    across.AddInside(Across(owner));
    down.AddInside(Down(owner));
    down.AddBeside(Down(owner));
    for (const Rect& area : to_stay_visible) {
        across.AddBeside(Across(area));
        down.AddBeside(Down(area));
    }
    across.AddEdgesOfScreen();
    down.AddEdgesOfScreen();

    const auto cost = [&](const Rect& place) {
        std::int64_t hidden = 0;
        for (const Rect& area : to_stay_visible) {
            hidden += SharedArea(place, area);
        }
        return std::tuple(hidden, SharedArea(place, owner));
    };
    Rect best{across.All().front(), down.All().front(), 0, 0};
    best = {best.left, best.top, best.left + width, best.top + height};
    for (const int left : across.All()) {
        for (const int top : down.All()) {
            const Rect place{left, top, left + width, top + height};
            if (cost(place) < cost(best)) { // of equals the first
                best = place;
            }
        }
    }
    return best;
}

} // namespace partkeep
