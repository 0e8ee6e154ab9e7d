#include "desktop/dialog_font.h"

#include "partlibrary/library/library_text.h"
#include "settings/process_values.h"

#include <QFontMetrics>
#include <QStringList>

#include <algorithm>

namespace partkeep {

namespace {

constexpr int points_per_inch = 72;
constexpr int pixels_per_inch = 96;
constexpr int chinese = 3;

// Makes the keypad's digits about 50 pixels high, a finger's width at 96 dpi.
constexpr int finger_font_pixels = 16;

QStringList Families(const QString& wanted)
{
    const QStringList japanese{"Noto Sans CJK JP", "Noto Sans JP", "IPAexGothic", "VL PGothic", "VL Gothic"};
    const QStringList simplified{"Noto Sans CJK SC", "Noto Sans SC", "WenQuanYi Micro Hei", "WenQuanYi Zen Hei"};
    const QStringList latin{wanted, "DejaVu Sans Condensed", "Noto Sans", "DejaVu Sans", "Liberation Sans"};
    // Many characters have one code and two shapes, so the language decides which font comes first.
    return TheProcessValues().languageId == chinese ? latin + simplified + japanese : latin + japanese + simplified;
}

int RoundedProduct(int number, int numerator, int denominator)
{
    return (number * numerator + denominator / 2) / denominator;
}

} // namespace

QFont DialogFont(const DialogTemplate& dialog)
{
    QFont font;
    font.setFamilies(Families(FromWide(dialog.font)));
    font.setPixelSize(dialog.for_fingers ? finger_font_pixels
                                         : RoundedProduct(dialog.font_points, pixels_per_inch, points_per_inch));
    return font;
}

DialogUnits UnitsOf(const DialogTemplate& dialog, const QFont& font)
{
    const QFontMetrics metrics(font);
    const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    const int width = (metrics.horizontalAdvance(letters) / 26 + 1) / 2;
    const int height = metrics.height();
    if (dialog.for_fingers) {
        return {width, height};
    }
    return {std::max(width, min_base_width), std::clamp(height, min_base_height, max_base_height)};
}

QRect DialogUnits::ToPixels(int x, int y, int unit_width, int unit_height) const
{
    return {RoundedProduct(x, width, 4), RoundedProduct(y, height, 8), RoundedProduct(unit_width, width, 4),
            RoundedProduct(unit_height, height, 8)};
}

} // namespace partkeep
