// Byte input of the parser: a window straight onto a text or a stream's own buffer, so that bytes are looked at where
// they lie and nothing is read ahead: when the input goes, the stream stands behind the last byte taken.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <string_view>

#include "xml/xml_bytes.h"
#include "xml/xml_vector.h"

namespace partkeep {

// Bytes read from the stream. They lie in the stream's buffer or in the input's own, and are gone with the next read
// unless they are held.
using CXmlToken = std::string_view;

// The place where the parser stands, and the bytes around it.
struct XmlWindow {
    const char* begin;
    const char* at;
    const char* end;
};

class CXmlInput {
public:
    explicit CXmlInput(std::istream& stream) : stream_(&stream), ended_(stream.eof()) {}
    // They are the only window.
    explicit CXmlInput(std::string_view bytes)
        : begin_(bytes.data()), at_(begin_), end_(begin_ + bytes.size()), ended_(true)
    {
    }
    CXmlInput(const CXmlInput&) = delete;
    CXmlInput& operator=(const CXmlInput&) = delete;
    ~CXmlInput() { GiveBack(); }

    // Sets the stream's end state once there is nothing more.
    [[nodiscard]] bool AtEnd() { return at_ == end_ && !Refill(); }
    // What lies there, for a look ahead; TakeTo takes it up to a place therein.
    [[nodiscard]] XmlWindow Window() const { return {begin_, at_, end_}; }
    void TakeTo(const char* at) { at_ = at; }
    [[nodiscard]] std::size_t Ahead() const { return static_cast<std::size_t>(end_ - at_); }
    // The next byte, left where it is; 0xFF at the end.
    [[nodiscard]] char Peek() { return AtEnd() ? '\xFF' : *at_; }

    // Goes to the next byte of the set or the end.
    template <CXmlByteSet Set>
    void SkipTo(bool consume)
    {
        // Most often it stands there already.
        if ((at_ != end_ && IsIn<Set>(*at_)) || Seek<Set>()) {
            at_ += consume ? 1 : 0;
        }
    }
    // Passes bytes of the set and gives their number.
    template <CXmlByteSet Set>
    std::size_t SkipSet()
    {
        std::size_t count = 0;
        for (; !AtEnd() && IsIn<Set>(*at_); ++at_) {
            ++count;
        }
        return count;
    }
    // Passes `bytes` where they come next as they are, followed by a byte of the set.
    template <CXmlByteSet Set>
    [[nodiscard]] bool SkipWord(std::string_view bytes)
    {
        const bool next =
            Ahead() > bytes.size() && EqualShort(at_, bytes.data(), bytes.size()) && IsIn<Set>(at_[bytes.size()]);
        at_ += next ? bytes.size() : 0;
        return next;
    }

    // The bytes up to the first one of the set, which stays; empty at the end.
    template <CXmlByteSet Set>
    [[nodiscard]] CXmlToken ReadToken()
    {
        if (AtEnd()) {
            return {};
        }
        const char* start = at_;
        at_ = Find<Set>(at_, end_);
        if (at_ != end_) {
            return {start, static_cast<std::size_t>(at_ - start)};
        }
        gathered_.Clear();
        while (Gather(start)) {
            start = at_;
            at_ = Find<Set>(at_, end_);
        }
        return {gathered_.begin(), gathered_.Size()};
    }

    // A token that later reads leave readable, until another takes its place.
    enum class Place : std::uint8_t { ElementName, AttributeName, Text };
    void Hold(Place place, CXmlToken token)
    {
        HeldToken& held = held_[static_cast<std::size_t>(place)];
        held.token = token;
        if (token.data() == gathered_.begin()) {
            Detach(held);
        }
    }
    // The reference stays good when the token moves.
    [[nodiscard]] const CXmlToken& Held(Place place) const { return held_[static_cast<std::size_t>(place)].token; }

    // True when a token found no memory.
    [[nodiscard]] bool HasFailed() const { return failed_; }
    void Fail() { failed_ = true; }

private:
    struct HeldToken {
        CXmlToken token;
        CXmlVector<char> copy;
    };

    // False at the end.
    template <CXmlByteSet Set>
    [[nodiscard]] bool Seek()
    {
        for (at_ = Find<Set>(at_, end_); at_ == end_; at_ = Find<Set>(at_, end_)) {
            if (!Refill()) {
                return false;
            }
        }
        return true;
    }
    // Takes the bytes from `start` on; true when the token may go on behind them.
    [[nodiscard]] bool Gather(const char* start);
    void Detach(HeldToken& held);
    void DetachFromWindow();
    [[nodiscard]] bool Refill();
    void GiveBack();

    std::istream* stream_ = nullptr;
    const char* begin_ = nullptr;
    const char* at_ = nullptr;
    const char* end_ = nullptr;
    char single_ = 0; // the window of a stream that has no buffer
    bool ended_;
    bool failed_ = false;
    std::array<HeldToken, 3> held_;
    CXmlVector<char> gathered_; // a token that goes on behind a window
};

} // namespace partkeep
