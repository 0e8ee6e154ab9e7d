// The Selected Parts dialog on real windows, over a bare window as its owner.

#include "desktop/qt_dialog_windows.h"
#include "resources/dialog_templates.h"
#include "selection/selected_parts_dlg.h"
#include "settings/process_values.h"
#include "tests/desktop/played_user.h"

#include <QTest>
#include <QTreeWidget>
#include <QWindow>

#include <gtest/gtest.h>

namespace partkeep {
namespace {

constexpr int list_window = RES_SELECTED_PARTS_DIALOG;
constexpr int keypad = RES_QUANTITY_KEYPAD;
constexpr int owner_window = RES_SELECTION_DIALOG;

class CCountingOwner : public IDialogHandler {
public:
    void OnInitDialog() override {}
    void OnCommand(int) override { ++commands; }

    int commands = 0;
};

class QtSelectedParts : public ::testing::Test {
protected:
    QtSelectedParts()
    {
        TheProcessValues().languageId = 1;
        EXPECT_TRUE(owner_->CreateModeless(counter_, nullptr));
        owner_->Show(true);
        Settle();
        EXPECT_TRUE(dialog_.Create(*owner_));
        dialog_.InitColumns();
        for (const char16_t* name : {u"A", u"B", u"C", u"D"}) {
            PartRecord part;
            part.PartName = name;
            part.serverName = u"SRV1";
            part.folderName = u"Plates";
            part.Qty = u"1";
            dialog_.selectedParts.push_back(part);
            dialog_.AddLastPartRow();
        }
        dialog_.Show();
        Settle();
    }
    ~QtSelectedParts() override { dialog_.EmptyAndDestroy(); }

    static QTreeWidget* List() { return dynamic_cast<QTreeWidget*>(ControlOf(list_window, RES_PART_LIST)); }

    static void ClickRow(int row, Qt::KeyboardModifiers modifiers = {})
    {
        const QRect place = List()->visualItemRect(List()->topLevelItem(row));
        const QPoint point = List()->viewport()->mapTo(List()->window(), place.center());
        QTest::mouseClick(List()->window()->windowHandle(), Qt::LeftButton, modifiers, point);
    }

    // What rows and records show alike: "name quantity".
    QStringList Shown() const
    {
        QStringList rows;
        QStringList records;
        for (int row = 0; row < List()->topLevelItemCount(); ++row) {
            const QTreeWidgetItem* item = List()->topLevelItem(row);
            EXPECT_EQ(item->text(1), "SRV1\\Plates");
            rows << item->text(0) + ' ' + item->text(2);
        }
        for (const PartRecord& part : dialog_.selectedParts) {
            records << QString::fromStdU16String(part.PartName + u" " + part.Qty);
        }
        EXPECT_EQ(rows, records);
        return rows;
    }

    CQtDialogWindows windows_{nullptr};
    CCountingOwner counter_;
    std::unique_ptr<IDialogWindow> owner_ = windows_.Make(selection_dialog_template);
    CSelectedPartsDlg dialog_{windows_, nullptr};
};

TEST_F(QtSelectedParts, RemoveTakesTheClickedRowsAndLeavesNoneSelected)
{
    ClickRow(1);
    ClickRow(3, Qt::ControlModifier);
    Click(list_window, RES_REMOVE);
    EXPECT_EQ(Shown(), (QStringList{"A 1", "C 1"}));
    Click(list_window, RES_REMOVE); // nothing is selected any more
    EXPECT_EQ(Shown(), (QStringList{"A 1", "C 1"}));
}

TEST_F(QtSelectedParts, ChangeQtyRunsTheKeypadWhileTheOwnerWaits)
{
    ClickRow(0);
    ClickRow(2, Qt::ShiftModifier);
    PlayWhile({Clicking(list_window, RES_CHANGE_QUANTITY),
               [this] {
                   Click(owner_window, RES_ADD);
                   EXPECT_EQ(counter_.commands, 0);
               },
               Typing(keypad, "025"), Pressing(keypad, Qt::Key_Return)},
              [] { EXPECT_TRUE(QTest::qWaitFor([] { return List()->topLevelItem(0)->text(2) == "025"; })); });
    EXPECT_EQ(Shown(), (QStringList{"A 025", "B 025", "C 025", "D 1"}));
    Click(owner_window, RES_ADD);
    EXPECT_EQ(counter_.commands, 1);
}

TEST_F(QtSelectedParts, KeysAndCloseBoxHideItAndNothingIsLost)
{
    const struct {
        const char* label;
        UserStep close;
    } rows[] = {
        {"Enter in the list", Pressing(list_window, Qt::Key_Return)},
        {"Escape", Pressing(list_window, Qt::Key_Escape)},
        {"close box", [] { WindowOf(list_window)->close(); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        Settle();
        WindowOf(list_window)->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(WindowOf(list_window)));
        ClickRow(0);
        row.close();
        EXPECT_EQ(WindowOf(list_window), nullptr);
        dialog_.Show();
        ASSERT_NE(WindowOf(list_window), nullptr);
        EXPECT_EQ(Shown(), (QStringList{"A 1", "B 1", "C 1", "D 1"}));
    }
    EXPECT_EQ(counter_.commands, 0);
}

TEST_F(QtSelectedParts, ShowsWithoutTakingTheKeysAndF6GoesBetweenTheTwo)
{
    ASSERT_TRUE(QTest::qWaitForWindowActive(WindowOf(owner_window)));
    Settle();
    PressKey(owner_window, Qt::Key_F6);
    Settle();
    ASSERT_TRUE(QTest::qWaitForWindowActive(WindowOf(list_window)));
    PressKey(list_window, Qt::Key_F6);
    EXPECT_TRUE(QTest::qWaitForWindowActive(WindowOf(owner_window)));
}

TEST_F(QtSelectedParts, GoesWithItsOwner)
{
    owner_->Destroy();
    EXPECT_EQ(WindowOf(list_window), nullptr);
    dialog_.AddLastPartRow(); // without a window nothing happens
    dialog_.EmptyAndDestroy();
}

} // namespace
} // namespace partkeep
