// All three windows as they open in a run, in each language, light and dark: nothing overlaps, every caption fits.
// The scale of the screen comes from the environment. With PARTKEEP_PICTURES set, pictures go to that folder.

#include "desktop/qt_dialog_windows.h"
#include "resources/resource_ids.h"
#include "selection/partkeep_read_dlg.h"
#include "settings/process_values.h"
#include "tests/desktop/played_user.h"
#include "tests/support/scripted_control.h"
#include "tests/support/temporary_folder.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPalette>

#include <gtest/gtest.h>

namespace partkeep {
namespace {

constexpr int all_windows[] = {RES_SELECTION_DIALOG, RES_SELECTED_PARTS_DIALOG, RES_QUANTITY_KEYPAD};

// The browser's place is all that counts here.
class CBlankBrowserFactory : public IQtControlFactory {
public:
    explicit CBlankBrowserFactory(ControlScript& script) : script_(script) {}

    std::unique_ptr<IHostedControl> Create(const ClassId&, QWidget* parent, QWidget*& widget) override
    {
        widget = new QWidget(parent);
        widget->setFocusPolicy(Qt::StrongFocus);
        return script_.MakeControl();
    }

private:
    ControlScript& script_;
};

QPalette DarkPalette()
{
    QPalette dark(QColor(45, 45, 48));
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    return dark;
}

std::vector<QWidget*> VisibleControls(const QWidget& window)
{
    std::vector<QWidget*> controls;
    for (QWidget* child : window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child->isVisible() && !child->isWindow()) {
            controls.push_back(child);
        }
    }
    return controls;
}

// The panel and the picture share one spot and take turns.
bool TakeTurns(const QWidget& left, const QWidget& right)
{
    const auto is_pane = [](const QWidget& widget) {
        return widget.objectName() == QString::number(RES_PICTURE) ||
               widget.objectName() == QString::number(RES_IMAGE_PANEL);
    };
    return is_pane(left) && is_pane(right);
}

void ExpectNoOverlaps(const QWidget& window)
{
    const auto controls = VisibleControls(window);
    for (auto left = controls.begin(); left != controls.end(); ++left) {
        EXPECT_TRUE(window.rect().contains((*left)->geometry())) << (*left)->objectName().toStdString();
        for (auto right = left + 1; right != controls.end(); ++right) {
            EXPECT_TRUE(TakeTurns(**left, **right) || !(*left)->geometry().intersects((*right)->geometry()))
                << (*left)->objectName().toStdString() << " and " << (*right)->objectName().toStdString();
        }
    }
}

// What a caption needs at least, in its own font: its text alone.
void ExpectCaptionFits(const QWidget& control, const QString& text, int room)
{
    const QSize needed = control.fontMetrics().size(Qt::TextSingleLine | Qt::TextShowMnemonic, text);
    EXPECT_LE(needed.width(), room) << text.toStdString();
    EXPECT_LE(control.fontMetrics().capHeight() + control.fontMetrics().descent(), control.height());
    EXPECT_EQ(text.contains(QChar(0x2026)), !control.toolTip().isEmpty()) << "elided without the whole as tool tip";
}

void ExpectCaptionsFit(const QWidget& window)
{
    for (QWidget* control : VisibleControls(window)) {
        if (const auto* label = qobject_cast<QLabel*>(control)) {
            ExpectCaptionFits(*control, label->text(), control->width());
        } else if (const auto* box = qobject_cast<QCheckBox*>(control)) {
            ExpectCaptionFits(*control, box->text(), control->width() - 16);
        } else if (const auto* button = qobject_cast<QAbstractButton*>(control)) {
            ExpectCaptionFits(*control, button->text(), control->width() - 6);
        }
    }
}

void ExpectSpokenNames(const QWidget& window)
{
    for (QWidget* control : VisibleControls(window)) {
        const bool is_bar = control->findChild<QAbstractButton*>() != nullptr && control->objectName().isEmpty();
        const bool is_list = control->objectName() == QString::number(RES_PART_LIST);
        if (is_bar || is_list || control->objectName() == QString::number(RES_BROWSER)) {
            continue; // named by what is in them, or by their window
        }
        const auto* spoken = QAccessible::queryAccessibleInterface(control);
        ASSERT_NE(spoken, nullptr);
        const QString name = spoken->text(QAccessible::Name);
        EXPECT_FALSE(name.isEmpty()) << control->objectName().toStdString();
        EXPECT_FALSE(name.contains('&')) << name.toStdString();
    }
}

void SavePicture(QWidget& window, const std::string& name)
{
    const QString folder = qEnvironmentVariable("PARTKEEP_PICTURES");
    if (!folder.isEmpty()) {
        const QString scale = qEnvironmentVariable("QT_SCALE_FACTOR", "1");
        EXPECT_TRUE(window.grab().save(folder + '/' + QString::fromStdString(name) + '_' + window.objectName() +
                                       "_at_" + scale + ".png"));
    }
}

class Layout : public ::testing::TestWithParam<std::tuple<int, bool>> {
protected:
    Layout()
    {
        const auto [language, dark] = GetParam();
        TheProcessValues().languageId = language;
        TheProcessValues().workingFolder = folder_.Core(u"");
        QApplication::setPalette(dark ? DarkPalette() : QPalette(QColor(239, 239, 239)));
        ScriptedPart part;
        part.name = u"P1";
        part.server = u"SRV1";
        part.folder = u"Plates";
        script_.selection = {part};
    }

    void CheckWindow(int number)
    {
        QWidget* window = WindowOf(number);
        ASSERT_NE(window, nullptr) << number;
        SCOPED_TRACE(number);
        ExpectNoOverlaps(*window);
        ExpectCaptionsFit(*window);
        ExpectSpokenNames(*window);
        const auto [language, dark] = GetParam();
        SavePicture(*window, std::to_string(language) + (dark ? "_dark" : "_light"));
    }

    CTemporaryFolder folder_;
    Recorder recorder_;
    ControlScript script_{recorder_};
    CBlankBrowserFactory factory_{script_};
    CQtDialogWindows windows_{&factory_};
};

TEST_P(Layout, FitsInEveryLanguage)
{
    CPartkeepReadDlg dialog(windows_);
    dialog.installFolder = folder_.Core();
    dialog.workingFolder = folder_.Core(u"");
    dialog.multiSelection = true;
    PlayWhile({Clicking(RES_SELECTION_DIALOG, RES_ADD), // lists the part
               [this] {
                   script_.selection.push_back({u"P2", u"SRV1", u"Plates"});
               },
               Clicking(RES_SELECTION_DIALOG, RES_ASK_QUANTITY), Clicking(RES_SELECTION_DIALOG, RES_ADD),
               [this] {
                   for (const int number : all_windows) {
                       CheckWindow(number);
                   }
               },
               Pressing(RES_QUANTITY_KEYPAD, Qt::Key_Escape), Pressing(RES_SELECTION_DIALOG, Qt::Key_Escape)},
              [&dialog] { EXPECT_EQ(dialog.DoModal(), id_cancel); });
}

INSTANTIATE_TEST_SUITE_P(LanguagesAndThemes, Layout,
                         ::testing::Combine(::testing::Values(1, 2, 3), ::testing::Values(false, true)));

} // namespace
} // namespace partkeep
