#include "host/component/host_outputs.h"

#include <span>
#include <utility>

namespace partkeep {

std::u16string* CHostOutputs::Lend(BSTR* place)
{
    if (place == nullptr || text_count_ == texts_.size()) {
        return nullptr;
    }
    if (start_ == Start::Empty) {
        *place = nullptr; // which is an empty text
    }
    Text& text = texts_[text_count_++];
    text.place = place;
    return &text.value;
}

std::int32_t* CHostOutputs::Lend(LONG* place)
{
    if (place != nullptr && start_ == Start::Empty) {
        *place = 0;
    }
    number_place_ = place;
    return place != nullptr ? &number_ : nullptr;
}

double* CHostOutputs::Lend(double* place)
{
    if (place != nullptr && start_ == Start::Empty) {
        *place = 0.0;
    }
    real_place_ = place;
    return place != nullptr ? &real_ : nullptr;
}

bool CHostOutputs::MakeTexts()
{
    const std::span<Text> lent = std::span(texts_).first(text_count_);
    for (Text& text : lent) {
        text.made = SysAllocStringLen(AsWide(text.value.data()), static_cast<UINT>(text.value.size()));
        if (text.made == nullptr) {
            for (Text& done : lent) {
                SysFreeString(std::exchange(done.made, nullptr));
            }
            return false;
        }
    }
    return true;
}

bool CHostOutputs::HandOver()
{
    if (!MakeTexts()) {
        return false;
    }
    for (Text& text : std::span(texts_).first(text_count_)) {
        *text.place = std::exchange(text.made, nullptr);
    }
    if (number_place_ != nullptr) {
        *number_place_ = number_;
    }
    if (real_place_ != nullptr) {
        *real_place_ = real_;
    }
    return true;
}

} // namespace partkeep
