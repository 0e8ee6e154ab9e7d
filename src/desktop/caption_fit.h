// Makes captions fit their controls: translated texts are longer than the room that the template gave them.
#pragma once

#include <QString>

class QFont;
class QWidget;

namespace partkeep {

// Gives the widget the largest font, from `font` down to a limit, in which `caption` fits `room` pixels, and
// returns the text to show. Where even the smallest does not do, the text is elided and the tool tip shows the
// whole. "&" marks the access letter.
[[nodiscard]] QString FitCaption(QWidget& widget, const QFont& font, const QString& caption, int room);

// A caption as it is read aloud: without access letter and line ends.
[[nodiscard]] QString SpokenCaption(QString caption);

} // namespace partkeep
