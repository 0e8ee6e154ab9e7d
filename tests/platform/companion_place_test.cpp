#include "platform/companion_place.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <tuple>

namespace partkeep {

static std::ostream& operator<<(std::ostream& out, const Rect& area)
{
    return out << area.left << ' ' << area.top << ' ' << area.right << ' ' << area.bottom;
}

namespace {

// The owner has its list above, its buttons below at the right, and pictures at the left that may be hidden.
TEST(CompanionPlace, IsBesideTheOwnerElseWhereItHidesNeitherListNorButtons)
{
    const std::tuple<const char*, Rect, Rect, Rect> rows[]{
        {"to the right", {100, 50, 900, 650}, {0, 0, 1920, 1040}, {908, 50, 1278, 260}},
        {"to the left", {1000, 50, 1800, 650}, {0, 0, 1920, 1040}, {622, 50, 992, 260}},
        {"below", {240, 50, 1040, 650}, {0, 0, 1280, 1024}, {240, 658, 610, 868}},
        {"above", {240, 250, 1040, 850}, {0, 0, 1280, 1024}, {240, 32, 610, 242}},
        {"over the pictures", {283, 84, 1083, 684}, {0, 0, 1366, 768}, {0, 558, 370, 768}},
        {"on a screen at the left of the main one", {-1700, 50, -900, 650}, {-1920, 0, 0, 1040}, {-892, 50, -522, 260}},
        {"owner half beside the screen", {-300, -40, 500, 560}, {0, 0, 1920, 1040}, {508, 350, 878, 560}},
        {"no room at all", {0, 0, 800, 600}, {0, 0, 300, 200}, {0, 0, 370, 210}}};
    for (const auto& [label, owner, screen, expected] : rows) {
        const auto within = [&owner = owner](const Rect& area) {
            return Rect{owner.left + area.left, owner.top + area.top, owner.left + area.right, owner.top + area.bottom};
        };
        const Rect list = within({10, 60, 790, 400});
        const Rect buttons = within({480, 560, 790, 590});
        EXPECT_EQ(CompanionPlace(owner, screen, 370, 210, std::array{list, buttons}), expected) << label;
    }
}

} // namespace
} // namespace partkeep
