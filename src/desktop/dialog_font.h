// The font of a dialog and the dialog units that follow from it.
#pragma once

#include "resources/dialog_templates.h"

#include <QFont>
#include <QRect>

namespace partkeep {

// The template's font or one that looks like it, with fonts behind it for Japanese and Chinese in the order that
// the process's language asks for. Larger where the dialog is worked by fingers.
[[nodiscard]] QFont DialogFont(const DialogTemplate& dialog);

// The base units of a font: a quarter of `width` and an eighth of `height` make a dialog unit.
struct DialogUnits {
    int width;
    int height;

    [[nodiscard]] QRect ToPixels(int x, int y, int unit_width, int unit_height) const;
};

[[nodiscard]] DialogUnits UnitsOf(const DialogTemplate& dialog, const QFont& font);

} // namespace partkeep
