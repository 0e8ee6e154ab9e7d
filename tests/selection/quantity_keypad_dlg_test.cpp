#include "selection/quantity_keypad_dlg.h"

#include "resources/resource_ids.h"
#include "settings/local_strings.h"
#include "settings/process_values.h"
#include "tests/support/scripted_window.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace partkeep {
namespace {

using user::Key;
using user::Press;
using user::Type;

class QuantityKeypad : public ::testing::Test {
protected:
    QuantityKeypad() { TheProcessValues().languageId = 1; }

    int Run(std::vector<UserAction> actions)
    {
        windows_.Play(RES_QUANTITY_KEYPAD, std::move(actions));
        CQuantityKeypadDlg keypad(windows_, nullptr);
        const int answer = keypad.DoModal();
        quantity_ = keypad.Quantity();
        return answer;
    }

    std::vector<std::string> Messages() const
    {
        std::vector<std::string> messages;
        std::copy_if(recorder_.lines.begin(), recorder_.lines.end(), std::back_inserter(messages),
                     [](const std::string& line) { return line.find("message") == 0; });
        return messages;
    }

    Recorder recorder_;
    CScriptedWindows windows_{recorder_};
    std::u16string quantity_;
};

std::string MessageLine(std::int32_t number)
{
    return "message " + Quoted(LoadLocalString(number)) + " 'Kolvyn PartkeepRead'";
}

UserAction SetByProgram(std::u16string text)
{
    return [text](CScriptedWindow& window) { window.SetText(RES_QUANTITY, text); };
}

TEST_F(QuantityKeypad, ChecksInOrderAndStaysOpenWhenItRefuses)
{
    constexpr int accepted = 0;
    constexpr int silent = -1;
    const struct {
        const char* label;
        std::u16string text; // in the field when OK is pressed
        int outcome;         // or the number of the message
    } rows[] = {
        {"empty", u"", silent},
        {"blanks only", u"   ", silent},
        {"smallest", u"1", accepted},
        {"largest", u"99999", accepted},
        {"zeros in front stay", u"007", accepted},
        {"blank at the end stays", u"12 ", accepted},
        {"tab at the end stays", u"12\t", accepted},
        {"five digits and blanks", u"12345  ", accepted},
        {"zero", u"0", 139},
        {"two zeros", u"00", 139},
        {"six digits", u"100000", 139},
        {"six digits that are small", u"000001", 139},
        {"far too many digits", std::u16string(4000, u'9'), 139},
        {"minus", u"-5", 139},
        {"letter first", u"a5", 139},
        {"sign alone", u"+", 139},
        {"two signs", u"+-5", 139},
        {"full-width digits", u"１２", 139},
        {"plus", u"+5", 129},
        {"blank first", u" 5", 129},
        {"letter behind", u"5a", 129},
        {"point", u"1.5", 129},
        {"blank inside", u"1 2", 129},
        {"NUL behind", std::u16string(u"5\0", 2), 129},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        recorder_.lines.clear();
        std::vector<UserAction> actions{SetByProgram(row.text), Press(RES_OK)};
        if (row.outcome != accepted) {
            actions.push_back([&row](CScriptedWindow& window) { EXPECT_EQ(window.Text(RES_QUANTITY), row.text); });
            actions.push_back(Key(key_escape));
        }
        EXPECT_EQ(Run(actions), row.outcome == accepted ? id_ok : id_cancel);
        EXPECT_EQ(quantity_, row.text);
        const auto expected =
            row.outcome > 0 ? std::vector<std::string>{MessageLine(row.outcome)} : std::vector<std::string>();
        EXPECT_EQ(Messages(), expected);
    }
}

TEST_F(QuantityKeypad, EveryDigitButtonAddsItsDigitsAtTheEnd)
{
    std::vector<UserAction> actions;
    for (int id = RES_DIGIT_1; id <= RES_DIGIT_0; ++id) {
        actions.push_back(Press(id));
    }
    actions.push_back(user::CloseBox());
    EXPECT_EQ(Run(actions), id_cancel);
    EXPECT_EQ(quantity_, u"123456789000");
    EXPECT_TRUE(Messages().empty());
}

TEST_F(QuantityKeypad, KeyboardAndButtonsMeet)
{
    const auto select = [](std::size_t start, std::size_t end) {
        return [=](CScriptedWindow& window) { window.SelectText(RES_QUANTITY, start, end); };
    };
    const struct {
        const char* label;
        std::vector<UserAction> actions;
        std::u16string field;
    } rows[] = {
        {"keyboard stops at five", {Type(RES_QUANTITY, u"123456")}, u"12345"},
        {"button passes the limit", {Type(RES_QUANTITY, u"12345"), Press(RES_DIGIT_6)}, u"123456"},
        {"selected text goes first", {Type(RES_QUANTITY, u"12345"), select(1, 3), Press(RES_DIGIT_9)}, u"1459"},
        {"00 over everything", {Type(RES_QUANTITY, u"12"), select(0, 2), Press(RES_DIGIT_00)}, u"00"},
        {"00 then 7", {Press(RES_DIGIT_00), Press(RES_DIGIT_7)}, u"007"},
        {"refused blank stays in front of the digit",
         {Type(RES_QUANTITY, u"0 "), Press(RES_OK), Press(RES_DIGIT_5)},
         u"0 5"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        auto actions = row.actions;
        actions.push_back(user::CloseBox());
        EXPECT_EQ(Run(actions), id_cancel);
        EXPECT_EQ(quantity_, row.field);
    }
}

TEST_F(QuantityKeypad, EnterInTheFieldMeansOk)
{
    EXPECT_EQ(Run({Type(RES_QUANTITY, u"42"), Key(key_return)}), id_ok);
    EXPECT_EQ(quantity_, u"42");
}

TEST_F(QuantityKeypad, OpensWithTheTextsOfTheLanguageAndAnEmptyField)
{
    TheProcessValues().languageId = 2;
    int icon = 0;
    windows_.parentIcon = &icon;
    windows_.Play(RES_QUANTITY_KEYPAD, {[this](CScriptedWindow& window) {
                                            EXPECT_EQ(window.title, u"員数入力");
                                            EXPECT_EQ(window.Text(RES_QUANTITY_CAPTION), u"パーツ員数\n");
                                            EXPECT_EQ(window.Text(RES_CANCEL), u"キャンセル");
                                            EXPECT_EQ(window.Text(RES_OK), u"OK");
                                            EXPECT_EQ(window.Text(RES_QUANTITY), u"");
                                            EXPECT_EQ(window.focused, RES_QUANTITY);
                                            EXPECT_EQ(recorder_.lines.at(1), "202: SetSmallIcon parent's");
                                        },
                                        user::CloseBox()});
    EXPECT_EQ(CQuantityKeypadDlg(windows_, &icon).DoModal(), id_cancel);
}

TEST_F(QuantityKeypad, CancelsWhereNoWindowCanBeMade)
{
    windows_.canMakeWindows = false;
    EXPECT_EQ(CQuantityKeypadDlg(windows_, nullptr).DoModal(), id_cancel);
}

} // namespace
} // namespace partkeep
