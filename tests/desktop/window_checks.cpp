#include "tests/desktop/window_checks.h"

#include "desktop/pane/key_sheet.h"
#include "desktop/readable_colours.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMetaEnum>
#include <QRegularExpression>
#include <QToolButton>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iconv.h>

namespace partkeep {

using namespace Qt::StringLiterals;

namespace {

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

// Names that read the same everywhere, what the library holds, and keys as they stand on keyboards.
const QRegularExpression exceptions(
    u"Partkeep Read|Kolvyn|Partkeep|PNG|/[\\w/.-]+|PART|NCT|LASER|MARVEN|SRV1|Plates|2008|Bare|SPCC|板金|筐体|"
    u"タレット|取付板|\\b[pP]\\d+|Ctrl|Shift|Alt|\\bF\\d|CSV|csv|partkeep-library check --rebuild|\\(&?[A-Z]\\)|"
    u"\\bmm\\b|\\binch\\b|\\bOK\\b|\\bNO\\b|\\b[Mk]iB\\b"_s);

// Whether an old encoding of one language has a character: each lacks the characters of the other that look alike.
bool IsIn(const char* encoding, QChar character)
{
    iconv_t converter = iconv_open(encoding, "UTF-16LE");
    char from[]{static_cast<char>(character.cell()), static_cast<char>(character.row())};
    char to[4];
    char* at[] = {from, to};
    std::size_t left[] = {sizeof from, sizeof to};
    const bool converted = iconv(converter, &at[0], &left[0], &at[1], &left[1]) == 0;
    iconv_close(converter);
    return converted;
}

void Collect(const QMenu& menu, QStringList& texts)
{
    for (const QAction* action : menu.actions()) {
        texts += action->text();
        if (action->menu() != nullptr) {
            Q_EMIT action->menu()->aboutToShow();
            Collect(*action->menu(), texts);
        }
    }
}

void Collect(QWidget& widget, QStringList& texts)
{
    texts += {widget.windowTitle(), widget.toolTip(), widget.accessibleName(), widget.accessibleDescription()};
    if (const auto* button = qobject_cast<QAbstractButton*>(&widget)) {
        texts += button->text();
    }
    const bool of_keyboard = dynamic_cast<CKeySheet*>(widget.window()) != nullptr && widget.font().bold();
    if (const auto* label = qobject_cast<QLabel*>(&widget); label != nullptr && !of_keyboard) {
        texts += label->text();
    }
    if (auto* field = qobject_cast<QLineEdit*>(&widget)) {
        texts += field->placeholderText();
        Collect(*std::unique_ptr<QMenu>(field->createStandardContextMenu()), texts);
    }
    if (const auto* box = qobject_cast<QComboBox*>(&widget)) {
        for (int entry = 0; entry < box->count(); ++entry) {
            texts += box->itemText(entry);
        }
    }
    if (const auto* header = qobject_cast<QHeaderView*>(&widget); header != nullptr && header->model() != nullptr) {
        for (int section = 0; section < header->count(); ++section) {
            texts += header->model()->headerData(section, header->orientation()).toString();
        }
    }
    if (auto* menu = qobject_cast<QMenu*>(&widget)) {
        Q_EMIT menu->aboutToShow();
        Collect(*menu, texts);
    }
}

void ExpectNoOverlaps(const QWidget& parent)
{
    auto shown = parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    shown.removeIf([](const QWidget* child) { return !child->isVisible() || child->isWindow(); });
    for (auto left = shown.begin(); left != shown.end(); ++left) {
        EXPECT_TRUE(parent.rect().contains((*left)->geometry())) << (*left)->objectName().toStdString();
        for (auto right = left + 1; right != shown.end(); ++right) {
            EXPECT_FALSE((*left)->geometry().intersects((*right)->geometry()))
                << (*left)->objectName().toStdString() << " and " << (*right)->objectName().toStdString();
        }
    }
}

// What a caption needs at least, in its own font: its text alone, and where that is cut short the whole as tool tip.
void ExpectCaptionFits(const QWidget& control, const QString& text, int beside)
{
    const QSize needed = control.fontMetrics().size(Qt::TextSingleLine | Qt::TextShowMnemonic, text);
    EXPECT_LE(needed.width(), control.width() - beside) << text.toStdString();
    EXPECT_LE(control.fontMetrics().capHeight() + control.fontMetrics().descent(), control.height());
    EXPECT_TRUE(!text.contains(QChar(0x2026)) || !control.toolTip().isEmpty()) << text.toStdString();
}

} // namespace

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

void ExpectReadable(QWidget& window)
{
    ExpectReadableColours(window);
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (widget->window()->isVisible()) { // a window that has never been up has no colours yet
            ExpectReadableColours(*widget);
        }
    }
}

void ExpectGoodLooks(QWidget& window)
{
    ExpectNoOverlaps(window);
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible()) {
            continue;
        }
        if (widget->layout() != nullptr) {
            ExpectNoOverlaps(*widget);
        }
        if (const auto* label = qobject_cast<QLabel*>(widget)) {
            ExpectCaptionFits(*widget, label->text(), 0);
        } else if (const auto* tool = qobject_cast<QToolButton*>(widget)) {
            EXPECT_TRUE(tool->text().isEmpty() || widget->width() >= widget->sizeHint().width());
            EXPECT_GE(widget->height(), 26);
        } else if (const auto* button = qobject_cast<QAbstractButton*>(widget)) {
            ExpectCaptionFits(*widget, button->text(), qobject_cast<QCheckBox*>(widget) != nullptr ? 16 : 6);
        } else if (const auto* header = qobject_cast<QHeaderView*>(widget); header != nullptr && !header->isHidden()) {
            for (int column = 0; column < header->count(); ++column) {
                const QString text = header->model()->headerData(column, Qt::Horizontal).toString();
                EXPECT_GE(header->sectionSize(column), header->fontMetrics().horizontalAdvance(text));
            }
        }
    }
}

bool IsOfLanguage(QString text, int language)
{
    text.remove(exceptions);
    const bool latin = text.contains(QRegularExpression(u"[A-Za-z]{2}"_s));
    return (language == 1 || !latin) && std::ranges::all_of(text, [language](QChar character) {
               const bool letter = character.isLetter() && character.unicode() >= 0x3041;
               const bool kana = character.unicode() <= 0x30fa;
               return !letter || (language == 2 && IsIn("CP932", character)) ||
                      (language == 3 && !kana && IsIn("GB2312", character));
           });
}

// Paths and folders of this machine are no texts of ours: the lists of a file dialog are passed over.
void ExpectLanguage(int language)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        QStringList texts;
        Collect(*window, texts);
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            const bool of_files = qobject_cast<QFileDialog*>(window) != nullptr;
            const bool of_machine = of_files && (qobject_cast<QComboBox*>(widget) != nullptr ||
                                                 qobject_cast<QComboBox*>(widget->parentWidget()) != nullptr);
            if (!of_machine) {
                Collect(*widget, texts);
            }
        }
        for (const QString& text : texts) {
            EXPECT_TRUE(IsOfLanguage(text, language))
                << window->metaObject()->className() << " in language " << language << ": " << text.toStdString();
        }
    }
}

} // namespace partkeep
