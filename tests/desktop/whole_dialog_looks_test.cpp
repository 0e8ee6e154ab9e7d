// What the windows look like and say in whole runs, in each language, light and dark. The scale of the screen comes
// from the environment. With PARTKEEP_PICTURES set, pictures go to that folder.
#include "tests/desktop/whole_dialog.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QMetaEnum>
#include <QStyle>

#include <cmath>

namespace partkeep {
namespace {

// What a screen reader meets, in its order: "Role name" of each element that is shown, the list's cells included.
void Spoken(QAccessibleInterface& element, QStringList& all)
{
    static const auto roles = QMetaEnum::fromType<QAccessible::Role>();
    if (element.state().invisible) {
        return;
    }
    const QString name = element.text(QAccessible::Name);
    EXPECT_FALSE(name.contains(u'&')) << name.toStdString();
    EXPECT_TRUE(!name.isEmpty() || !element.state().focusable || element.role() == QAccessible::Cell);
    if (element.role() != QAccessible::Client && element.role() != QAccessible::Splitter) { // but for layout
        all += QString::fromLatin1(roles.valueToKey(element.role())) + u' ' + name;
    }
    for (int child = 0; child < element.childCount(); ++child) {
        if (QAccessibleInterface* inner = element.child(child)) {
            Spoken(*inner, all);
        }
    }
}

const char* const spoken_in_english =
    "Dialog Partkeep Read|Button OK|Button Cancel|EditableText Parts Name|EditableText Comment|StaticText Display Unit|"
    "StaticText Comment|StaticText Parts Name|StaticText 2D Image|StaticText 3D Image|CheckBox Input Quantity|Button "
    "Add|"
    "ComboBox Metric|EditableText Search|CheckBox Whole server|ButtonMenu Narrow|Button Columns|Button Export|Table "
    "Parts|Cell P1|Cell 1.50|Cell SPCC|"
    "Cell タレット|Cell 取付板|Cell P2|Cell 0.00|Cell |Cell |Cell |Cell P10|Cell -0.00|Cell |Cell |Cell |"
    "StaticText 3 parts   ·   2 selected|ButtonMenu Places|Tree Servers and folders|TreeItem SRV1|TreeItem Plates|"
    "TreeItem 2008|TreeItem 板金|Grip |Graphic 2D Image|Graphic 3D Image|ToolBar Machine filter|CheckBox PART|CheckBox "
    "NCT|"
    "CheckBox LASER|CheckBox MARVEN|"
    "Dialog Selected Parts|Button Remove|Button Change Qty.|Tree Selected Parts|ColumnHeader Part Name|ColumnHeader "
    "Path|"
    "ColumnHeader Quantity|TreeItem P1|TreeItem SRV1\\Plates\\2008|TreeItem 1|StaticText 1|"
    "Dialog Input Quantity|StaticText Part NO.|EditableText Part NO.|Button 1|Button 2|Button 3|Button 4|Button 5|"
    "Button 6|Button 7|Button 8|Button 9|Button 00|Button 0|Button OK|Button Cancel";

QPalette DarkPalette()
{
    QPalette dark(QColor(45, 45, 48));
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::Highlight, QColor(48, 140, 198));
    return dark;
}

double Luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

void ExpectReadable(const QWidget& widget)
{
    static constexpr std::pair<QPalette::ColorRole, QPalette::ColorRole> texts[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::Text, QPalette::Base},
        {QPalette::ButtonText, QPalette::Button},
        {QPalette::HighlightedText, QPalette::Highlight},
        {QPalette::PlaceholderText, QPalette::Base}};
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        for (const auto& [text, ground] : texts) {
            const QColor colour = widget.palette().color(group, text);
            const auto [dark, light] =
                std::minmax({Luminance(colour), Luminance(widget.palette().color(group, ground))});
            EXPECT_GE((light + 0.05) / (dark + 0.05), 4.5) << widget.objectName().toStdString() << " " << text;
            EXPECT_EQ(colour.alpha(), 255) << text;
        }
    }
}

std::vector<QWidget*> ShownIn(const QWidget& parent)
{
    std::vector<QWidget*> shown;
    for (QWidget* child : parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child->isVisible() && !child->isWindow()) {
            shown.push_back(child);
        }
    }
    return shown;
}

void ExpectNoOverlaps(const QWidget& parent)
{
    const auto shown = ShownIn(parent);
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

void ExpectGoodLooks(QWidget& window)
{
    ExpectNoOverlaps(window);
    ExpectReadable(window);
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible()) {
            continue;
        }
        ExpectReadable(*widget);
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

class Looks : public WholeDialog, public ::testing::WithParamInterface<std::tuple<int, bool>> {
protected:
    Looks() : WholeDialog(std::get<int>(GetParam()))
    {
        QApplication::setPalette(std::get<bool>(GetParam()) ? DarkPalette() : QApplication::style()->standardPalette());
        QAccessible::setActive(true);
    }
    ~Looks() override { QApplication::setPalette(QApplication::style()->standardPalette()); }

    void CheckWindows() const
    {
        const auto [language, dark] = GetParam();
        const QString pictures = qEnvironmentVariable("PARTKEEP_PICTURES");
        QStringList spoken;
        for (const int number : {dialog, list_window, keypad}) {
            SCOPED_TRACE(number);
            QWidget* window = WindowOf(number);
            ASSERT_NE(window, nullptr);
            ExpectGoodLooks(*window);
            Spoken(*QAccessible::queryAccessibleInterface(window), spoken);
            if (!pictures.isEmpty()) {
                window->grab().save(u"%1/%2_%3_%4_at_%5.png"_s.arg(pictures, window->objectName())
                                        .arg(language)
                                        .arg(dark ? u"dark"_s : u"light"_s)
                                        .arg(window->devicePixelRatio()));
            }
        }
        for (int id = RES_DIGIT_1; id <= RES_DIGIT_0; ++id) { // large enough for a finger
            EXPECT_GE(std::min(ControlOf(keypad, id)->height(), ControlOf(keypad, id)->width()), 44) << id;
        }
        if (language == 1) {
            EXPECT_EQ(spoken.join(u'|').toStdString(), spoken_in_english);
        }
    }
};

TEST_P(Looks, FromStartToTheHostsRecords)
{
    EXPECT_EQ(Run(true, {Row(0), Clicking(dialog, RES_ADD), Clicking(dialog, RES_ASK_QUANTITY), Row(1),
                         Row(2, Qt::ShiftModifier), Clicking(dialog, RES_ADD), [this] { CheckWindows(); },
                         Clicking(keypad, RES_DIGIT_1), Clicking(keypad, RES_DIGIT_00),
                         Pressing(keypad, Qt::Key_Return), Pressing(dialog, Qt::Key_Return)}),
              "P1 x1 0, P2 x100 0, P10 x100 0");
}

INSTANTIATE_TEST_SUITE_P(LanguagesAndThemes, Looks,
                         ::testing::Combine(::testing::Values(1, 2, 3), ::testing::Values(false, true)));

} // namespace
} // namespace partkeep
