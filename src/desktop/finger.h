// Sizes and motion for fingers: what they hit is large enough, and what they push goes no further than it should.
#pragma once

class QAbstractScrollArea;
class QMouseEvent;

namespace partkeep {

// In logical pixels. `by_mouse` is what suits a mouse; where the screen takes touch it is a finger's side at least.
[[nodiscard]] int FingerSide(int by_mouse);

// Made by the toolkit of what a finger does.
[[nodiscard]] bool IsOfFinger(const QMouseEvent& event);

// Without a bounce at the ends; and where the style shows no motion, without rolling on behind the finger.
void ScrollByFinger(QAbstractScrollArea& area);

} // namespace partkeep
