#include "desktop/qt_toolbar.h"

#include "desktop/interface_language.h"
#include "desktop/spoken_role.h"
#include "settings/process_values.h"

#include <QHBoxLayout>
#include <QHelpEvent>
#include <QImage>
#include <QKeySequence>
#include <QSignalBlocker>
#include <QToolButton>
#include <QToolTip>

namespace partkeep {

namespace {

constexpr int bar_margin = 1;
constexpr int tool_width = 30;
constexpr int tool_height = 26; // the browser begins 30 pixels below the top
constexpr int sharpest_ratio = 4;

class CTool : public QToolButton {
public:
    using QToolButton::QToolButton;

    CQtToolbar::Text tip;

protected:
    void nextCheckState() override {} // the program presses

    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::ToolTip || !tip) {
            return QToolButton::event(event);
        }
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), tip(property("command").toInt()), this);
        return true;
    }
};

// Nothing shows it: the buttons are named by their tool tips alone.
QString SpokenName()
{
    switch (InterfaceLanguageOf(TheProcessValues().languageId)) {
    case InterfaceLanguage::Japanese:
        return QStringLiteral("機械フィルター");
    case InterfaceLanguage::Chinese:
        return QStringLiteral("机床筛选");
    case InterfaceLanguage::English:
        break;
    }
    return QStringLiteral("Machine filter");
}

// The strip with its background clear; what the first pixel shows counts as background.
QImage ReadStrip(const ToolbarTemplate& toolbar)
{
    QImage strip = QImage::fromData(toolbar.bitmap.data(), static_cast<int>(toolbar.bitmap.size()), "BMP");
    strip.convertTo(QImage::Format_ARGB32);
    const QRgb background = strip.pixel(0, 0);
    for (int y = 0; y < strip.height(); ++y) {
        for (int x = 0; x < strip.width(); ++x) {
            if (strip.pixel(x, y) == background) {
                strip.setPixel(x, y, 0);
            }
        }
    }
    return strip;
}

// Whole multiples of the pixels, so that the picture stays sharp on dense screens.
QIcon ToIcon(const QImage& image)
{
    QIcon icon;
    for (int ratio = 1; ratio <= sharpest_ratio; ++ratio) {
        QPixmap pixels = QPixmap::fromImage(image.scaled(image.size() * ratio));
        pixels.setDevicePixelRatio(ratio);
        icon.addPixmap(pixels);
    }
    return icon;
}

} // namespace

CQtToolbar::CQtToolbar(const ToolbarTemplate& toolbar, QWidget* parent, const Command& command) : QFrame(parent)
{
    hide();
    SetSpokenRole(*this, QAccessible::ToolBar);
    setAccessibleName(SpokenName());
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(bar_margin, bar_margin, bar_margin, bar_margin);
    row->setSpacing(0);
    const QImage strip = ReadStrip(toolbar);
    int place = 0;
    for (const int number : toolbar.commands) {
        auto* tool = new CTool(this);
        const int left = place * toolbar.button_width;
        tool->setIcon(ToIcon(strip.copy(left, 0, toolbar.button_width, toolbar.button_height)));
        tool->setIconSize({toolbar.button_width, toolbar.button_height});
        tool->setFixedSize(tool_width, tool_height);
        tool->setCheckable(true);
        tool->setAutoRaise(true);
        tool->setFocusPolicy(Qt::NoFocus);
        tool->setObjectName(QString::number(number));
        tool->setProperty("command", number);
        // Tools take no focus; this is their way by keyboard.
        tool->setShortcut(QKeySequence(Qt::ALT | static_cast<Qt::Key>(Qt::Key_1 + place)));
        const auto press = [command, number] { command(number); };
        connect(tool, &QToolButton::clicked, this, press);
        connect(tool, &QToolButton::toggled, this, press); // as assistive tools do it, without a click
        row->addWidget(tool);
        ++place;
    }
    row->addStretch();
    resize(parent->width(), tool_height + 2 * bar_margin);
}

void CQtToolbar::EnableToolTips(const Text& text)
{
    for (QToolButton* tool : findChildren<QToolButton*>()) {
        tool->setAccessibleName(text(tool->property("command").toInt()));
        static_cast<CTool*>(tool)->tip = text;
    }
}

void CQtToolbar::Press(int command, bool pressed)
{
    if (QToolButton* tool = Tool(command)) {
        const QSignalBlocker ours(tool);
        tool->setChecked(pressed);
    }
}

QToolButton* CQtToolbar::Tool(int command) const
{
    return findChild<QToolButton*>(QString::number(command));
}

} // namespace partkeep
