#include "desktop/readable_colours.h"

#include <algorithm>
#include <cmath>

namespace partkeep {

namespace {

constexpr double least_contrast = 4.5;
constexpr double faint_share = 0.35; // of the ground in a faint text
constexpr int step_percent = 105;
constexpr int most_steps = 40;

// Relative luminance of one sRGB channel.
double Linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& colour)
{
    return 0.2126 * Linear(colour.redF()) + 0.7152 * Linear(colour.greenF()) + 0.0722 * Linear(colour.blueF());
}

// Darker under light text, lighter under dark text, in the same hue.
QColor GroundFor(QColor ground, const QColor& text)
{
    const bool light_text = Luminance(text) > Luminance(ground);
    for (int step = 0; step < most_steps && ContrastOf(ground, text) < least_contrast; ++step) {
        ground = light_text ? ground.darker(step_percent) : ground.lighter(step_percent);
    }
    return ground;
}

} // namespace

double ContrastOf(const QColor& one, const QColor& other)
{
    const auto [darker, lighter] = std::minmax({Luminance(one), Luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor FaintText(const QColor& text, const QColor& ground)
{
    const auto mixed = [](double mine, double other) { return mine + (other - mine) * faint_share; };
    const QColor faint = QColor::fromRgbF(static_cast<float>(mixed(text.redF(), ground.redF())),
                                          static_cast<float>(mixed(text.greenF(), ground.greenF())),
                                          static_cast<float>(mixed(text.blueF(), ground.blueF())));
    return ContrastOf(faint, ground) < least_contrast ? text : faint;
}

QPalette ReadableColours(const QPalette& theme)
{
    QPalette readable;
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        readable.setColor(
            group, QPalette::Highlight,
            GroundFor(theme.color(group, QPalette::Highlight), theme.color(group, QPalette::HighlightedText)));
        readable.setColor(group, QPalette::PlaceholderText,
                          FaintText(theme.color(group, QPalette::Text), theme.color(group, QPalette::Base)));
    }
    return readable;
}

} // namespace partkeep
