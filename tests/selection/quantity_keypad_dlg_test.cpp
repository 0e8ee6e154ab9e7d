#include "selection/quantity_keypad_dlg.h"

#include "settings/local_strings.h"
#include "settings/process_values.h"
#include "tests/support/scripted_window.h"

namespace partkeep {
namespace {

class QuantityKeypad : public ::testing::Test {
protected:
    QuantityKeypad() { TheProcessValues().languageId = 1; }

    int Run(std::vector<UserAction> actions)
    {
        windows_.Play(RES_QUANTITY_KEYPAD, std::move(actions));
        CQuantityKeypadDlg keypad(door_, windows_.parentIcon);
        const int answer = keypad.DoModal();
        quantity_ = keypad.Quantity();
        return answer;
    }

    Recorder recorder_;
    CScriptedWindows windows_{recorder_};
    CEventDoor door_{windows_};
    std::u16string quantity_;
};

TEST_F(QuantityKeypad, ChecksInOrderAndStaysOpenWhenItRefuses)
{
    constexpr int accepted = 0;
    constexpr int silent = -1;
    const std::pair<int, std::vector<std::u16string>> rows[] = {
        // or the number of the message
        {accepted, {u"1", u"99999", u"007", u"12 ", u"12\t\r", u"12345  "}},
        {silent, {u"", u"   "}},
        {139, {u"0", u"00", u"100000", u"000001", std::u16string(4000, u'9'), u"-5", u"a5", u"+", u"+-5", u"１２"}},
        {129, {u"+5", u" 5", u"5a", u"1.5", u"1 2", std::u16string(u"5\0", 2)}},
    };
    for (const auto& [outcome, texts] : rows) {
        for (const std::u16string& text : texts) {
            SCOPED_TRACE(Quoted(text));
            std::vector<UserAction> actions{[&](auto& window) { window.SetText(RES_QUANTITY, text); },
                                            user::Press(RES_OK)};
            if (outcome != accepted) {
                actions.push_back([&](auto& window) { EXPECT_EQ(window.Text(RES_QUANTITY), text); });
                actions.push_back(user::Key(key_escape));
            }
            EXPECT_EQ(Run(actions), outcome == accepted ? id_ok : id_cancel);
            EXPECT_EQ(quantity_, text);
            std::erase_if(recorder_.lines, [](const std::string& line) { return !line.starts_with("message"); });
            const std::string message = "message " + Quoted(LoadLocalString(outcome)) + " 'Kolvyn PartkeepRead'";
            EXPECT_EQ(recorder_.Take(), outcome > 0 ? Lines{message} : Lines{});
        }
    }
}

TEST_F(QuantityKeypad, ButtonsPutTheirDigitsBehindTheText)
{
    std::vector<UserAction> every_button{user::Type(RES_QUANTITY, u"0 "), user::Press(RES_OK)}; // is refused, and stays
    for (int id = RES_DIGIT_1; id <= RES_DIGIT_0; ++id) {
        every_button.push_back(user::Press(id));
    }
    every_button.push_back(user::close_box);
    EXPECT_EQ(Run(every_button), id_cancel);
    EXPECT_EQ(quantity_, u"0 123456789000");
}

TEST_F(QuantityKeypad, OpensWithTheTextsOfTheLanguageAndAnEmptyField)
{
    TheProcessValues().languageId = 2;
    int icon = 0;
    windows_.parentIcon = &icon;
    const auto look = [this](CScriptedWindow& window) {
        EXPECT_EQ(recorder_.Take(), Steps("202: RunModal; 202: SetSmallIcon parent's; 202: LimitText 219 5; "
                                          "202: SetText 218 'パーツ員数\n'; 202: SetText 2 'キャンセル'; "
                                          "202: SetText 1 'OK'; 202: SetTitle '員数入力'"));
        EXPECT_EQ(window.Text(RES_QUANTITY), u"");
        EXPECT_EQ(window.focused, RES_QUANTITY);
    };
    EXPECT_EQ(Run({look, user::close_box}), id_cancel);
    windows_.canMakeWindows = false;
    EXPECT_EQ(CQuantityKeypadDlg(door_, nullptr).DoModal(), id_cancel);
}

} // namespace
} // namespace partkeep
