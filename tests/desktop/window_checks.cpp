#include "tests/desktop/window_checks.h"

#include "desktop/readable_colours.h"

#include <QAccessible>
#include <QMetaEnum>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace partkeep {

namespace {

void Speak(QAccessibleInterface& element, QStringList& spoken)
{
    static const auto roles = QMetaEnum::fromType<QAccessible::Role>();
    if (element.state().invisible) {
        return;
    }
    const QString name = element.text(QAccessible::Name);
    EXPECT_FALSE(name.contains(u'&')) << name.toStdString();
    EXPECT_TRUE(!name.isEmpty() || !element.state().focusable || element.role() == QAccessible::Cell)
        << roles.valueToKey(element.role());
    if (element.role() != QAccessible::Client && element.role() != QAccessible::Splitter) { // but for layout
        spoken += QString::fromLatin1(roles.valueToKey(element.role())) + u' ' + name;
    }
    for (int child = 0; child < element.childCount(); ++child) {
        if (QAccessibleInterface* inner = element.child(child)) {
            Speak(*inner, spoken);
        }
    }
}

double Luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double Contrast(const QColor& one, const QColor& other)
{
    const auto [dark, light] = std::minmax({Luminance(one), Luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

void ExpectReadableColours(const QWidget& widget)
{
    static constexpr std::pair<QPalette::ColorRole, QPalette::ColorRole> texts[] = {
        {QPalette::WindowText, QPalette::Window},         {QPalette::Text, QPalette::Base},
        {QPalette::Text, QPalette::AlternateBase},        {QPalette::ButtonText, QPalette::Button},
        {QPalette::HighlightedText, QPalette::Highlight}, {QPalette::PlaceholderText, QPalette::Base}};
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        const auto of = [&](QPalette::ColorRole role) { return widget.palette().color(group, role); };
        for (const auto& [text, ground] : texts) {
            EXPECT_GE(Contrast(of(text), of(ground)), 4.5)
                << widget.metaObject()->className() << " " << widget.objectName().toStdString() << " " << text;
            EXPECT_EQ(of(text).alpha(), 255) << widget.metaObject()->className() << " " << text;
        }
        const QColor folder = FaintText(of(QPalette::Text), of(QPalette::Base)); // of a result, in every other row
        EXPECT_GE(Contrast(folder, of(QPalette::AlternateBase)), 4.5);
    }
}

} // namespace

void Speak(QWidget& window, QStringList& spoken)
{
    Speak(*QAccessible::queryAccessibleInterface(&window), spoken);
}

void ExpectReadable(QWidget& window)
{
    ExpectReadableColours(window);
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (widget->window()->isVisible()) { // a window that has never been up has no colours yet
            ExpectReadableColours(*widget);
        }
    }
}

} // namespace partkeep
