// Colours that can be read on a shop floor, whatever the host's theme: texts stand out from their ground by 4.5 to 1
// at least, as WCAG 2.1 measures it (success criterion 1.4.3).
#pragma once

#include <QColor>
#include <QPalette>

namespace partkeep {

// From 1 to 21.
[[nodiscard]] double ContrastOf(const QColor& one, const QColor& other);

// Fainter than `text`, still readable on `ground`: for hints and headings.
[[nodiscard]] QColor FaintText(const QColor& text, const QColor& ground);

// Sets only what has to be other than `theme` has it: the ground of selected text, and hints in empty fields.
[[nodiscard]] QPalette ReadableColours(const QPalette& theme);

} // namespace partkeep
