#include "selection/quantity_keypad_dlg.h"

#include "partdata/plain_message.h"
#include "resources/dialog_templates.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

namespace partkeep {

namespace {

constexpr std::size_t max_characters = 5; // and so no more than 99999

struct DigitButton {
    int id;
    const char16_t* digits;
};

constexpr DigitButton digit_buttons[] = {
    {RES_DIGIT_0, u"0"}, {RES_DIGIT_1, u"1"}, {RES_DIGIT_2, u"2"},   {RES_DIGIT_3, u"3"},
    {RES_DIGIT_4, u"4"}, {RES_DIGIT_5, u"5"}, {RES_DIGIT_6, u"6"},   {RES_DIGIT_7, u"7"},
    {RES_DIGIT_8, u"8"}, {RES_DIGIT_9, u"9"}, {RES_DIGIT_00, u"00"},
};

bool IsBlank(char16_t unit)
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

bool IsDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

std::u16string_view WithoutBlanksAtEnd(std::u16string_view text)
{
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Reads as _wtol does: leading blanks, a sign, then digits up to the first other character. The text is not all
// blanks and holds at most `max_characters` characters, so that no number can run over.
std::int32_t ReadNumber(std::u16string_view text)
{
    while (IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    const bool negative = text.front() == u'-';
    if (negative || text.front() == u'+') {
        text.remove_prefix(1);
    }
    std::int32_t number = 0;
    for (auto unit = text.begin(); unit != text.end() && IsDigit(*unit); ++unit) {
        number = number * 10 + (*unit - u'0');
    }
    return negative ? -number : number;
}

// The range comes before the digits: a text that begins with a letter counts as 0 and is answered with the
// range, and so is a number with too many digits.
std::optional<LocalString> Refusal(std::u16string_view text)
{
    if (text.size() > max_characters) {
        return LocalString::QuantityRange;
    }
    if (ReadNumber(text) < 1) {
        return LocalString::QuantityRange;
    }
    if (!std::all_of(text.begin(), text.end(), IsDigit)) {
        return LocalString::DigitsOnly;
    }
    return std::nullopt;
}

} // namespace

CQuantityKeypadDlg::CQuantityKeypadDlg(CEventDoor& door, IconHandle icon)
    : entrance_(door, quantity_keypad_template, *this), window_(entrance_.Window()), dialogIcon_(icon)
{
}

void CQuantityKeypadDlg::OnInitDialog()
{
    window_.SetSmallIcon(dialogIcon_);
    window_.Fields().LimitText(RES_QUANTITY, static_cast<int>(max_characters));
    window_.Fields().SetText(RES_QUANTITY_CAPTION, LoadLocalString(LocalString::PartNumber));
    window_.Fields().SetText(RES_CANCEL, LoadLocalString(LocalString::Cancel));
    window_.Fields().SetText(RES_OK, LoadLocalString(LocalString::Ok));
    window_.SetTitle(LoadLocalString(LocalString::InputQuantity));
}

void CQuantityKeypadDlg::OnCommand(int id)
{
    if (id == id_ok) {
        OnOK();
        return;
    }
    if (id == id_cancel) {
        entrance_.EndModal(id_cancel);
        return;
    }
    for (const DigitButton& button : digit_buttons) {
        if (button.id == id) {
            OnDigit(button.digits);
        }
    }
}

void CQuantityKeypadDlg::OnTextChange(int id)
{
    if (id == RES_QUANTITY) {
        quantityText_ = window_.Fields().Text(RES_QUANTITY);
    }
}

// The digits land at the end, wherever the caret stands, and pass by the limit on typed text.
void CQuantityKeypadDlg::OnDigit(const char16_t* digits)
{
    window_.Fields().ClearSelectedText(RES_QUANTITY);
    window_.Fields().SetText(RES_QUANTITY, quantityText_ + digits);
}

// Blanks at the end count for no check but stay in the field and in the result.
void CQuantityKeypadDlg::OnOK()
{
    quantityText_ = window_.Fields().Text(RES_QUANTITY);
    const std::u16string_view text = WithoutBlanksAtEnd(quantityText_);
    if (text.empty()) {
        return;
    }
    if (const auto refusal = Refusal(text)) {
        ShowPlainMessage(entrance_.OwnerMessages(), *refusal);
        return;
    }
    entrance_.EndModal(id_ok);
}

} // namespace partkeep
