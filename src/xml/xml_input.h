// Byte input of the parser: a window straight onto the stream's own buffer, so that bytes are looked at where they
// lie and nothing is read ahead: when the input goes, the stream stands behind the last byte taken.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <istream>
#include <string_view>

#include "xml/xml_vector.h"

namespace partkeep {

// A set of bytes, told by their texts.
class XmlByteSet {
public:
    explicit constexpr XmlByteSet(std::string_view bytes)
    {
        for (const char byte : bytes) {
            has_[static_cast<std::uint8_t>(byte)] = true;
        }
    }
    [[nodiscard]] constexpr bool Has(char byte) const { return has_[static_cast<std::uint8_t>(byte)]; }

private:
    std::array<bool, 256> has_{};
};

// Bytes read from the stream. They lie in the stream's buffer or in the input's own, and are gone with the next read
// unless they are held.
using CXmlToken = std::string_view;

class CXmlInput {
public:
    explicit CXmlInput(std::istream& stream) : stream_(stream), ended_(stream.eof()) {}
    CXmlInput(const CXmlInput&) = delete;
    CXmlInput& operator=(const CXmlInput&) = delete;
    ~CXmlInput() { GiveBack(); }

    // Sets the stream's end state once there is nothing more.
    [[nodiscard]] bool AtEnd() { return at_ == end_ && !Refill(); }
    // Bytes that lie in the window still.
    [[nodiscard]] std::size_t Ahead() const { return static_cast<std::size_t>(end_ - at_); }
    // The next byte, left where it is; 0xFF at the end.
    [[nodiscard]] char Peek() { return AtEnd() ? '\xFF' : *at_; }

    // Goes to the next such byte or the end.
    void SkipTo(char byte, bool consume)
    {
        // Most often it stands there already.
        if (at_ == end_ || *at_ != byte) {
            Seek(byte);
        }
        at_ += consume && at_ != end_ ? 1 : 0;
    }
    void SkipTo(const XmlByteSet& set, bool consume);
    // Passes bytes of the set and gives their number.
    std::size_t SkipSet(const XmlByteSet& set)
    {
        std::size_t count = 0;
        for (; !AtEnd() && set.Has(*at_); ++at_) {
            ++count;
        }
        return count;
    }
    // Passes `bytes` where they come next as they are, followed by a byte of the set.
    [[nodiscard]] bool SkipWord(std::string_view bytes, const XmlByteSet& set)
    {
        const bool next = static_cast<std::size_t>(end_ - at_) > bytes.size() &&
                          std::string_view(at_, bytes.size()) == bytes && set.Has(at_[bytes.size()]);
        at_ += next ? bytes.size() : 0;
        return next;
    }

    // The bytes up to the first one of the set, which stays; empty at the end.
    [[nodiscard]] CXmlToken ReadToken(char delimiter)
    {
        return ReadUpTo([=](const char* at, const char* end) {
            const void* found = std::memchr(at, delimiter, static_cast<std::size_t>(end - at));
            return found == nullptr ? end : static_cast<const char*>(found);
        });
    }
    [[nodiscard]] CXmlToken ReadToken(const XmlByteSet& delimiters)
    {
        return ReadUpTo([&](const char* at, const char* end) {
            while (at != end && !delimiters.Has(*at)) {
                ++at;
            }
            return at;
        });
    }

    // A token that later reads leave readable, until another takes its place.
    enum Place : std::uint8_t { element_name, attribute_name, text, places };
    void Hold(Place place, CXmlToken token)
    {
        held_[place].token = token;
        if (token.data() == gathered_.begin()) {
            Detach(held_[place]);
        }
    }
    [[nodiscard]] CXmlToken Held(Place place) const { return held_[place].token; }

    // True when a token found no memory.
    [[nodiscard]] bool HasFailed() const { return failed_; }
    void Fail() { failed_ = true; }

private:
    struct HeldToken {
        CXmlToken token;
        CXmlVector<char> copy;
    };

    template <class Find>
    CXmlToken ReadUpTo(Find find)
    {
        if (AtEnd()) {
            return {};
        }
        const char* start = at_;
        at_ = find(at_, end_);
        if (at_ != end_) {
            return {start, static_cast<std::size_t>(at_ - start)};
        }
        gathered_.Clear();
        while (Gather(start)) {
            start = at_;
            at_ = find(at_, end_);
        }
        return {gathered_.begin(), gathered_.Size()};
    }
    // Takes the bytes from `start` on; true when the token may go on behind them.
    [[nodiscard]] bool Gather(const char* start);
    void Seek(char byte);
    void Detach(HeldToken& held);
    [[nodiscard]] bool Refill();
    void GiveBack();

    std::istream& stream_;
    const char* begin_ = nullptr;
    const char* at_ = nullptr;
    const char* end_ = nullptr;
    char single_ = 0; // the window of a stream that has no buffer
    bool ended_;
    bool failed_ = false;
    std::array<HeldToken, places> held_;
    CXmlVector<char> gathered_; // a token that goes on behind a window
};

} // namespace partkeep
