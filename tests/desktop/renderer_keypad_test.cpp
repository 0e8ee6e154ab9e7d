// The keypad on real windows, worked by real keys and clicks.

#include "desktop/qt_dialog_windows.h"
#include "resources/resource_ids.h"
#include "selection/quantity_keypad_dlg.h"
#include "settings/process_values.h"
#include "tests/desktop/played_user.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

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

UserStep AnsweringMessage(QStringList& texts)
{
    return [&texts] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        texts.push_back(box->text());
        EXPECT_EQ(box->windowTitle(), QStringLiteral("Kolvyn PartkeepRead"));
        EXPECT_EQ(box->icon(), QMessageBox::NoIcon);
        box->buttons().front()->click();
    };
}

class QtKeypad : public ::testing::Test {
protected:
    QtKeypad() { TheProcessValues().languageId = 1; }

    int Run(std::vector<UserStep> steps)
    {
        CQuantityKeypadDlg dialog(windows_, nullptr);
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
    const struct {
        const char* label;
        std::vector<UserStep> steps;
        std::u16string field;
    } rows[] = {
        {"six typed characters give five", {Typing(keypad, "123456")}, u"12345"},
        {"paste fills up to five", {Typing(keypad, "12"), paste}, u"12345"},
        {"buttons pass the limit",
         {Typing(keypad, "12345"), Clicking(keypad, RES_DIGIT_6), Clicking(keypad, RES_DIGIT_00)},
         u"12345600"},
        {"no typing beyond what buttons made",
         {Typing(keypad, "12345"), Clicking(keypad, RES_DIGIT_6), Typing(keypad, "7")},
         u"123456"},
        {"deleting below the limit lets one type again",
         {Typing(keypad, "12345"), Clicking(keypad, RES_DIGIT_6), Pressing(keypad, Qt::Key_Backspace),
          Pressing(keypad, Qt::Key_Backspace), Typing(keypad, "89")},
         u"12348"},
        {"button takes the selected text away",
         {Typing(keypad, "12345"), Selecting(1, 2), Clicking(keypad, RES_DIGIT_9)},
         u"1459"},
        {"selection outlives the focus",
         {Typing(keypad, "123"), Selecting(0, 2), Pressing(keypad, Qt::Key_Tab), Pressing(keypad, Qt::Key_Space)},
         u"31"},
        {"digits land at the end wherever the caret stands",
         {Typing(keypad, "12"), Pressing(keypad, Qt::Key_Home), Clicking(keypad, RES_DIGIT_3)},
         u"123"},
        {"caret in the middle stays when the limit moves",
         {Clicking(keypad, RES_DIGIT_00), Clicking(keypad, RES_DIGIT_00), Clicking(keypad, RES_DIGIT_00),
          Pressing(keypad, Qt::Key_Home), Pressing(keypad, Qt::Key_Delete), Pressing(keypad, Qt::Key_Delete),
          Typing(keypad, "5")},
         u"50000"},
        {"shrinking by program then typing",
         {Clicking(keypad, RES_DIGIT_00), Clicking(keypad, RES_DIGIT_00), Clicking(keypad, RES_DIGIT_00),
          Selecting(0, 6), Clicking(keypad, RES_DIGIT_1), Typing(keypad, "234567")},
         u"12345"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        auto steps = row.steps;
        steps.push_back(Pressing(keypad, Qt::Key_Escape));
        EXPECT_EQ(Run(steps), id_cancel);
        EXPECT_EQ(quantity_, row.field);
    }
}

TEST_F(QtKeypad, EnterMeansOkAfterATapOnADigit)
{
    EXPECT_EQ(Run({Clicking(keypad, RES_DIGIT_4), Clicking(keypad, RES_DIGIT_2), Pressing(keypad, Qt::Key_Enter)}),
              id_ok);
    EXPECT_EQ(quantity_, u"42");
}

TEST_F(QtKeypad, EnterPressesTheButtonThatTheTabKeyChose)
{
    EXPECT_EQ(Run({Pressing(keypad, Qt::Key_Tab), Pressing(keypad, Qt::Key_Return), Clicking(keypad, RES_OK)}), id_ok);
    EXPECT_EQ(quantity_, u"1");
}

TEST_F(QtKeypad, RefusesInABoxAndStaysOpen)
{
    QStringList texts;
    EXPECT_EQ(Run({Clicking(keypad, RES_OK), // empty: nothing at all
                   Typing(keypad, "0"), Clicking(keypad, RES_OK), AnsweringMessage(texts), Typing(keypad, "x"),
                   Pressing(keypad, Qt::Key_Home), Typing(keypad, "3"), Pressing(keypad, Qt::Key_Return),
                   AnsweringMessage(texts), [] { WindowOf(keypad)->close(); }}),
              id_cancel);
    EXPECT_EQ(texts.join('|').toStdString(), "Please enter value within the range [1-99999]|"
                                             "Input Part number should be within the range [0-9].");
}

TEST_F(QtKeypad, TabGoesRoundInTheTemplatesOrder)
{
    std::vector<UserStep> steps;
    QStringList order;
    for (int press = 0; press < 14; ++press) {
        steps.push_back([&order] { order.push_back(WindowOf(keypad)->focusWidget()->objectName()); });
        steps.push_back(Pressing(keypad, Qt::Key_Tab));
    }
    steps.push_back(Pressing(keypad, Qt::Key_Backtab, Qt::ShiftModifier));
    steps.push_back([&order] { order.push_back(WindowOf(keypad)->focusWidget()->objectName()); });
    steps.push_back(Pressing(keypad, Qt::Key_Escape));
    Run(steps);
    EXPECT_EQ(order.join(' ').toStdString(), "219 220 221 222 223 224 225 226 227 228 229 230 1 2 2");
}

TEST_F(QtKeypad, DigitButtonsAreLargeEnoughForAFinger)
{
    Run({[] {
             for (int id = RES_DIGIT_1; id <= RES_DIGIT_0; ++id) {
                 EXPECT_GE(ControlOf(keypad, id)->height(), 44) << id;
                 EXPECT_GE(ControlOf(keypad, id)->width(), 44) << id;
             }
         },
         Pressing(keypad, Qt::Key_Escape)});
}

} // namespace
} // namespace partkeep
