// The keypad on real windows, worked by real keys and clicks.

#include "desktop/qt_dialog_windows.h"
#include "resources/resource_ids.h"
#include "selection/quantity_keypad_dlg.h"
#include "settings/process_values.h"
#include "tests/desktop/played_user.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>

#include <gtest/gtest.h>

namespace partkeep {
namespace {

constexpr int keypad = RES_QUANTITY_KEYPAD;

QLineEdit* Field()
{
    return qobject_cast<QLineEdit*>(ControlOf(keypad, RES_QUANTITY));
}

UserStep Selecting(int start, int length)
{
    return [=] { Field()->setSelection(start, length); };
}

class QtKeypad : public ::testing::Test {
protected:
    QtKeypad() { TheProcessValues().languageId = 1; }

    int Run(std::vector<UserStep> steps)
    {
        CEventDoor door(windows_);
        CQuantityKeypadDlg dialog(door, nullptr);
        int answer = 0;
        PlayWhile(std::move(steps), [&] { answer = dialog.DoModal(); });
        quantity_ = dialog.Quantity();
        return answer;
    }

    CQtDialogWindows windows_{nullptr};
    std::u16string quantity_;
};

TEST_F(QtKeypad, FieldHoldsWhatKeysAndButtonsPutIn)
{
    const UserStep paste = [] {
        QGuiApplication::clipboard()->setText("345678");
        Field()->paste();
    };
    const UserStep escape = Pressing(keypad, Qt::Key_Escape);
    const UserStep back = Pressing(keypad, Qt::Key_Backspace);
    const UserStep enter = Pressing(keypad, Qt::Key_Return);
    const UserStep tab = Pressing(keypad, Qt::Key_Tab);
    const UserStep six = Clicking(keypad, RES_DIGIT_6);
    const UserStep nine = Clicking(keypad, RES_DIGIT_9);
    const UserStep zeros = Clicking(keypad, RES_DIGIT_00);
    const struct {
        const char* label;
        std::vector<UserStep> steps;
        std::u16string field;
        int answer = id_cancel;
    } rows[] = {
        {"six typed characters give five", {Typing(keypad, "123456"), escape}, u"12345"},
        {"paste fills up to five", {Typing(keypad, "12"), paste, escape}, u"12345"},
        {"buttons pass the limit, keys do not", {Typing(keypad, "12345"), six, Typing(keypad, "7"), escape}, u"123456"},
        {"typing again below the limit",
         {Typing(keypad, "12345"), six, back, back, Typing(keypad, "89"), escape},
         u"12348"},
        {"button takes the selected text away", {Typing(keypad, "12345"), Selecting(1, 2), nine, escape}, u"1459"},
        {"selection outlives the focus",
         {Typing(keypad, "123"), Selecting(0, 2), tab, Pressing(keypad, Qt::Key_Space), escape},
         u"31"},
        {"caret in the middle stays when the limit moves, digits land at the end",
         {zeros, zeros, zeros, Pressing(keypad, Qt::Key_Home), Pressing(keypad, Qt::Key_Delete),
          Pressing(keypad, Qt::Key_Delete), Typing(keypad, "5"), back, six, escape},
         u"00006"},
        {"Enter means OK after a tap", {six, nine, Pressing(keypad, Qt::Key_Enter)}, u"69", id_ok},
        {"Enter presses what the Tab key chose", {tab, enter, Clicking(keypad, RES_OK)}, u"1", id_ok},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Run(row.steps), row.answer);
        EXPECT_EQ(quantity_, row.field);
    }
}

TEST_F(QtKeypad, RefusesInABoxAndStaysOpen)
{
    const auto answering = [](const char* text) { return [text] { EXPECT_EQ(AnswerMessage(), QString(text)); }; };
    EXPECT_EQ(
        Run({Clicking(keypad, RES_OK), // empty: nothing at all
             Typing(keypad, "0"), Clicking(keypad, RES_OK), answering("Please enter value within the range [1-99999]"),
             Typing(keypad, "x"), Pressing(keypad, Qt::Key_Home), Typing(keypad, "3"), Pressing(keypad, Qt::Key_Return),
             answering("Input Part number should be within the range [0-9]."), [] { WindowOf(keypad)->close(); }}),
        id_cancel);
}

} // namespace
} // namespace partkeep
