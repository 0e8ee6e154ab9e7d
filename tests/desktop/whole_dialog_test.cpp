// What an operator does in the dialog, and what the host gets for it.
#include "tests/desktop/whole_dialog.h"

#include <QApplication>

namespace partkeep {
namespace {

// The shop's folder shows P1, P2, P10 at first.
TEST_F(WholeDialog, HostGetsWhatTheOperatorPicked)
{
    const UserStep add = Clicking(dialog, RES_ADD);
    const UserStep load = Clicking(dialog, RES_LOAD);
    const UserStep f6 = Pressing(dialog, Qt::Key_F6);
    const UserStep hidden = [] { EXPECT_EQ(WindowOf(list_window), nullptr); };
    const UserStep enter = Pressing(dialog, Qt::Key_Return);
    const UserStep enter_in_keypad = Pressing(keypad, Qt::Key_Return);
    const UserStep control_a = Pressing(dialog, Qt::Key_A, Qt::ControlModifier);
    const UserStep alt_up = Pressing(dialog, Qt::Key_Up, Qt::AltModifier);
    const struct {
        const char* label;
        std::vector<UserStep> steps;
        const char* records;
        bool several = true;
    } rows[] = {
        {"Enter on Cancel loads", {Row(0), Focusing(RES_CANCEL), enter}, "P1 x1 0"},
        {"Enter in the search loads", {Row(1), Typing(dialog, "p2"), Pressing(dialog, Qt::Key_Enter)}, "P2 x1 0"},
        {"Escape cancels", {Row(0), add, Pressing(dialog, Qt::Key_Escape)}, "cancelled"},
        {"Cancel", {Row(0), Clicking(dialog, RES_CANCEL)}, "cancelled", false},
        {"Ctrl+A takes all of several",
         {Pressing(dialog, Qt::Key_F, Qt::ControlModifier), Typing(dialog, "1"), Expecting("P1 P10"), control_a, load},
         "P1 x1 0, P10 x1 0"},
        {"Ctrl+A leaves a single one", {Row(1), control_a, load}, "P2 x1 0", false},
        {"the last of several counts", {Row(0), Row(1, Qt::ControlModifier), load}, "P2 x1 0", false},
        {"the list closed by its box is loaded whole",
         {Row(0), add, Row(1), add, [] { WindowOf(list_window)->close(); }, Row(2), load},
         "P1 x1 0, P2 x1 0, P10 x1 0"},
        {"rows of the list removed and changed, while the dialog waits",
         {Row(0), add, Row(1), Row(2, Qt::ShiftModifier), add, ListRow(1), Clicking(list_window, RES_REMOVE),
          ListRow(0), ListRow(1, Qt::ControlModifier), Clicking(list_window, RES_CHANGE_QUANTITY), load,
          Typing(keypad, "025"), enter_in_keypad, Row(1), load},
         "P1 x025 0, P10 x025 0, P2 x1 0"},
        {"F6 goes to the list and back, Enter and Escape there hide it",
         {Row(0), add, f6, Pressing(list_window, Qt::Key_F6), f6, ListRow(0), Pressing(list_window, Qt::Key_Return),
          hidden, Row(1), add, f6, Pressing(list_window, Qt::Key_Escape), hidden, load},
         "P1 x1 0, P2 x1 0"},
        {"check box, six typed characters, buttons beyond the limit",
         {Clicking(dialog, RES_ASK_QUANTITY), Row(0), add, Typing(keypad, "5"), enter_in_keypad, Row(1), enter,
          Typing(keypad, "123456"), Clicking(keypad, RES_DIGIT_7), enter_in_keypad,
          [] { EXPECT_EQ(AnswerMessage(), u"Please enter value within the range [1-99999]"_s); },
          Pressing(keypad, Qt::Key_Backspace), Clicking(keypad, RES_OK)},
         "P1 x5 0, P2 x12345 0"},
        {"a double click adds where several are collected, on what is selected too",
         {DoubleClick(0), DoubleClick(2), Row(1), DoubleClick(1), load},
         "P1 x1 0, P10 x1 0, P2 x1 0"},
        {"a double click is OK where one is wanted", {DoubleClick(1)}, "P2 x1 0", false},
        {"keys of the browser from a button of the dialog",
         {Focusing(RES_CANCEL), alt_up, Expecting("Top"), Focusing(RES_CANCEL),
          Pressing(dialog, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier), Typing(dialog, "10"), Expecting("P10"),
          Row(0), Focusing(RES_ADD), Pressing(dialog, Qt::Key_F5), Expecting("P1 P2 P10"), load},
         "P10 x1 0"},
        {"a box that opens keeps its key",
         {Row(0), Focusing(RES_UNIT), alt_up, Expecting("P1 P2 P10"), enter},
         "P1 x1 0",
         false},
        {"filter buttons",
         {Clicking(dialog, RES_FILTER_NCT), Expecting("P1 p1"), Clicking(dialog, RES_FILTER_LASER), Expecting("P1 P10"),
          Row(0), load},
         "P1 x1 2"},
        {"unit box",
         {Row(0), Focusing(RES_UNIT), Pressing(dialog, Qt::Key_Down),
          [] { EXPECT_EQ(Pane().Model().HeaderText(PartColumn::Thickness), u"Thickness (inch)"_s); }, load},
         "P1 x1 0",
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Run(row.several, row.steps), row.records);
        EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
    }
}

TEST_F(WholeDialog, AddKeepsTheFocusAndTheNextKeyChangesNothing)
{
    const UserStep add = Clicking(dialog, RES_ADD);
    const UserStep down = Pressing(dialog, Qt::Key_Down);
    const UserStep keeps = [] { EXPECT_EQ(WindowOf(dialog)->focusWidget(), ControlOf(dialog, RES_ADD)); };
    const UserStep metric = [] { EXPECT_EQ(Pane().Model().HeaderText(PartColumn::Thickness), u"Thickness (mm)"_s); };
    const UserStep ask = Clicking(dialog, RES_ASK_QUANTITY);
    const UserStep enter = Pressing(keypad, Qt::Key_Return);
    const UserStep settle = [] { Settle(); };
    const UserStep escape = Pressing(keypad, Qt::Key_Escape);
    const UserStep five = Typing(keypad, "5");
    Run(true, {Row(0), add,  keeps,  down, ask,    Row(1), add,   five, enter,  settle,
               keeps,  down, Row(2), add,  escape, settle, keeps, down, metric, Pressing(dialog, Qt::Key_Escape)});
}

TEST_F(WholeDialog, TabPassesThroughTheBrowserBothWays)
{
    QString places; // a control's number, or the name of what has the focus in the browser
    std::vector<UserStep> steps{Focusing(RES_LOAD)};
    for (int press = 0; press < 22; ++press) {
        steps.push_back(press < 11 ? Pressing(dialog, Qt::Key_Tab)
                                   : Pressing(dialog, Qt::Key_Backtab, Qt::ShiftModifier));
        steps.push_back([&] {
            const QWidget* focused = WindowOf(dialog)->focusWidget();
            places += (Pane().isAncestorOf(focused) ? focused->accessibleName() : focused->objectName()) + u' ';
        });
    }
    steps.push_back(Pressing(dialog, Qt::Key_Escape));
    EXPECT_EQ(Run(true, steps), "cancelled");
    EXPECT_EQ(places.toStdString(),
              "2 Places Servers and folders Search Whole server Narrow Columns Export Parts 202 201 "
              "202 Parts Export Columns Narrow Whole server Search Servers and folders Places 2 201 ");
}

} // namespace
} // namespace partkeep
