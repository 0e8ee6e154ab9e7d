#include "xml/xml_quick_parser.h"

#include <algorithm>
#include <bit>

#include "xml/xml_reader.h"

namespace partkeep {

namespace {

// Where every "<" of the next 64 bytes stands is found at once: so the search for one does not wait for what has to be
// done with the one before.
class CStarts {
public:
    // The window has as many bytes before `end`.
    CStarts(const char* at, const char* end) : at_(at), end_(end)
    {
        const char* from = std::min(at, end - xml_marks_width);
        marks_ = Marks<text_set>(from) >> (at - from);
    }
    // The place behind the first "<" from `place` on; null where there is none, or it is the last byte.
    [[nodiscard]] const char* Behind(const char* place) const
    {
        const auto passed = static_cast<std::size_t>(place - at_);
        const std::uint64_t left = passed < xml_marks_width ? marks_ >> passed : 0;
        const char* start = left != 0 ? place + std::countr_zero(left) : Find<text_set>(place, end_);
        return end_ - start < 2 ? nullptr : start + 1;
    }

private:
    const char* at_;
    const char* end_;
    std::uint64_t marks_;
};

// name="value" pairs and the blanks between them.
class CAttributes {
public:
    // The place of the ">" or "/" behind them; null where something else stands, and for too many.
    const char* Read(const char* at, const char* end)
    {
        while (at != nullptr && at != end && *at != '>' && *at != '/') {
            at = IsIn<space_set>(*at) ? at + 1 : ReadOne(at, end);
        }
        return at == end ? nullptr : at;
    }
    [[nodiscard]] bool IsEmpty() const { return count_ == 0; }
    [[nodiscard]] bool Hang(const CXmlMould& mould, std::byte* slot, const char* readable) const
    {
        for (std::size_t at = 0; at < count_; ++at) {
            const Places& one = list_[at];
            const std::string_view name(one.name, static_cast<std::size_t>(one.name_end - one.name));
            const std::string_view value(one.value, static_cast<std::size_t>(one.value_end - one.value));
            if (!mould.HangText(slot, name, value, readable)) {
                return false;
            }
        }
        return true;
    }

private:
    struct Places {
        const char* name;
        const char* name_end;
        const char* value;
        const char* value_end;
    };

    const char* ReadOne(const char* name, const char* end)
    {
        const char* name_end = Find<attribute_name_or_nul>(name, end);
        if (end - name_end < 2 || name_end[0] != '=' || name_end[1] != '"' || count_ == std::size(list_)) {
            return nullptr;
        }
        const char* value = name_end + 2;
        const char* value_end = Find<quote>(value, end);
        list_[count_++] = {name, name_end, value, value_end};
        return value_end == end ? nullptr : value_end + 1;
    }

    std::size_t count_ = 0;
    Places list_[32]; // unset from count_ on
};

class CQuickParser {
public:
    CQuickParser(const XmlWindow& window, const CXmlMould& mould, XmlOpenElements& open)
        : at_(window.at), end_(window.end), mould_(mould), open_(open), tail_(open.Last().tail)
    {
    }

    const char* Run()
    {
        for (const char* next = at_; next != nullptr; next = *at_ == '/' ? TakeEnd() : TakeStart()) {
            at_ = next;
        }
        open_.Last().tail = tail_;
        return at_;
    }

private:
    // These give the place behind the next "<"; null where nothing has been taken, or when there is no memory.
    const char* TakeStart()
    {
        const CStarts starts(at_, end_);
        const char* name_end = Find<element_name_or_nul>(at_, end_);
        const char* next = starts.Behind(at_);
        if (next == nullptr || name_end >= next || name_end == at_ || *at_ == '!' ||
            open_.Size() == xml_nesting_limit) {
            return nullptr;
        }
        const std::string_view name(at_, static_cast<std::size_t>(name_end - at_));
        if (*name_end != '>') {
            return TakeTag(starts, name);
        }
        return *next == '/' ? TakeLeaf(starts, name, next) : Open(mould_.MakeElement(name, end_), next);
    }

    const char* TakeLeaf(const CStarts& starts, std::string_view name, const char* slash)
    {
        const char* text = name.data() + name.size() + 1;
        const char* behind = BehindEnd(slash + 1, name);
        const char* next = behind == nullptr ? nullptr : starts.Behind(behind);
        if (next == nullptr) {
            return nullptr;
        }
        const std::string_view value(text, static_cast<std::size_t>(slash - text) - 1);
        return mould_.HangText(tail_, name, value, end_) ? next : nullptr;
    }

    // A tag with attributes, or one that is closed at once.
    const char* TakeTag(const CStarts& starts, std::string_view name)
    {
        CAttributes attributes;
        const char* bracket = attributes.Read(name.data() + name.size(), end_);
        const char* next = bracket == nullptr ? nullptr : starts.Behind(bracket);
        const bool closed = next != nullptr && *bracket == '/';
        if (next == nullptr || (closed ? bracket[1] != '>' : attributes.IsEmpty())) {
            return nullptr;
        }
        std::byte* block = mould_.MakeElement(name, end_);
        if (block != nullptr && !attributes.Hang(mould_, LastSlotOf(HolderOf(RootOf(block))), end_)) {
            DestroyBlock(block);
            block = nullptr;
        }
        if (!closed || block == nullptr) {
            return Open(block, next);
        }
        HangElement(tail_, block);
        return next;
    }

    // The last end of all is the careful way's.
    const char* TakeEnd()
    {
        if (open_.Size() == 1) {
            return nullptr;
        }
        std::byte* block = open_.Last().block;
        const char* behind = BehindEndTag(at_ + 1, end_, SingleNameOf(block));
        const char* start = behind == nullptr ? end_ : Find<text_set>(behind, end_);
        if (end_ - start < 2) {
            return nullptr;
        }
        open_.RemoveLast();
        tail_ = open_.Last().tail;
        HangElement(tail_, block);
        return start + 1;
    }

    // Nothing where there is no block.
    const char* Open(std::byte* block, const char* next)
    {
        if (block == nullptr) {
            return nullptr;
        }
        open_.Last().tail = tail_;
        std::byte* const tail = LastSlotOf(RootOf(block));
        if (!open_.Add({block, tail})) {
            DestroyBlock(block);
            return nullptr;
        }
        tail_ = tail;
        return next;
    }

    // BehindEndTag where the name stands in the window, too.
    const char* BehindEnd(const char* at, std::string_view name) const
    {
        if (name.size() >= xml_wide || static_cast<std::size_t>(end_ - at) < xml_wide) {
            return BehindEndTag(at, end_, name);
        }
        return EqualWide(at, name.data(), name.size() + 1) ? at + name.size() + 1 : nullptr;
    }

    const char* at_;
    const char* end_;
    const CXmlMould& mould_;
    XmlOpenElements& open_;
    std::byte* tail_; // of the innermost open element; its own field is behind
};

} // namespace

const char* TakeUsualElements(const XmlWindow& window, const CXmlMould& mould, XmlOpenElements& open)
{
    if (window.at == window.end || window.end - window.begin < static_cast<std::ptrdiff_t>(xml_marks_width)) {
        return window.at;
    }
    return CQuickParser(window, mould, open).Run();
}

} // namespace partkeep
