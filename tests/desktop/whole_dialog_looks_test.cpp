// What the windows look like and say in whole runs, in each language, in light, dark and high contrast. The scale of
// the screen comes from the environment. With PARTKEEP_PICTURES set, pictures go to that folder.
#include "tests/desktop/whole_dialog.h"
#include "tests/desktop/window_checks.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QStyle>

namespace partkeep {
namespace {

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

struct Theme {
    const char* name;
    QPalette colours;
};

Theme ThemeOf(int number)
{
    if (number == 0) {
        return {"light", QApplication::style()->standardPalette()};
    }
    QPalette dark(number == 1 ? QColor(45, 45, 48) : QColor(Qt::black));
    dark.setColor(QPalette::Base, number == 1 ? QColor(30, 30, 30) : QColor(Qt::black));
    dark.setColor(QPalette::Highlight, number == 1 ? QColor(48, 140, 198) : QColor(255, 255, 0));
    dark.setColor(QPalette::HighlightedText, number == 1 ? QColor(Qt::white) : QColor(Qt::black));
    return {number == 1 ? "dark" : "contrast", dark};
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

class Looks : public WholeDialog, public ::testing::WithParamInterface<std::tuple<int, int>> {
protected:
    Looks() : WholeDialog(std::get<0>(GetParam()))
    {
        QApplication::setPalette(theme_.colours);
        QAccessible::setActive(true);
    }
    ~Looks() override { QApplication::setPalette(QApplication::style()->standardPalette()); }

    void CheckWindows() const
    {
        const int language = std::get<0>(GetParam());
        const QString pictures = qEnvironmentVariable("PARTKEEP_PICTURES");
        QStringList spoken;
        for (const int number : {dialog, list_window, keypad}) {
            SCOPED_TRACE(number);
            QWidget* window = WindowOf(number);
            ASSERT_NE(window, nullptr);
            ExpectGoodLooks(*window);
            Speak(*window, spoken);
            if (!pictures.isEmpty()) {
                window->grab().save(u"%1/%2_%3_%4_at_%5.png"_s.arg(pictures, window->objectName())
                                        .arg(language)
                                        .arg(QLatin1String(theme_.name))
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

    Theme theme_ = ThemeOf(std::get<1>(GetParam()));
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
                         ::testing::Combine(::testing::Values(1, 2, 3), ::testing::Values(0, 1, 2)));

} // namespace
} // namespace partkeep
