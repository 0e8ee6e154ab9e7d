// Rectangles in logical pixels (96 dpi), right and bottom exclusive.
#pragma once

namespace partkeep {

struct Rect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    [[nodiscard]] int Width() const { return right - left; }
    [[nodiscard]] int Height() const { return bottom - top; }

    friend bool operator==(const Rect&, const Rect&) = default;
};

} // namespace partkeep
