// A user for real windows: plays steps from inside the event loop, also from inside the loops of windows that the
// steps open. Linking it gives a test program its QApplication, on the platform without a screen.
#pragma once

#include <QWidget>

#include <functional>
#include <vector>

namespace partkeep {

using UserStep = std::function<void()>;

// Runs `run` while the steps are played, one per turn of the loop. A run that has not ended some time after the
// last step fails the test and is closed.
void PlayWhile(std::vector<UserStep> steps, const std::function<void()>& run);

// The visible window of a dialog by its template's number, and a control in it by id; null where there is none.
[[nodiscard]] QWidget* WindowOf(int number);
[[nodiscard]] QWidget* ControlOf(int number, int id);

// Real events, by way of the window: what the window system would send.
void ClickAt(QWidget& widget, const QPoint& place, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
[[nodiscard]] UserStep Clicking(int number, int id);
[[nodiscard]] UserStep Pressing(int number, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
[[nodiscard]] UserStep Typing(int number, const QString& text);

// Presses the message box that is up and gives its text.
QString AnswerMessage();

// Lets the loop handle what is posted.
void Settle();

} // namespace partkeep
