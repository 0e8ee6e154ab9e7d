// Where a window opens that accompanies another one: its owner, in which the user goes on.
#pragma once

#include "platform/geometry.h"

#include <span>

namespace partkeep {

// The frame of the companion, of this width and height. All areas lie on one screen and are in the same unit.
// Beside the owner where the screen (what no task bar takes) has room; else where it hides as little as can be of
// `to_stay_visible`, then of the owner. Always on the screen; a companion larger than that begins in its corner.
[[nodiscard]] Rect CompanionPlace(const Rect& owner, const Rect& screen, int width, int height,
                                  std::span<const Rect> to_stay_visible);

} // namespace partkeep
