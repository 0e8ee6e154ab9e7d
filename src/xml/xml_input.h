// Byte input of the parser: a window straight onto the stream's own buffer, so that bytes are looked at where they
// lie and nothing is read ahead: when the input goes, the stream stands behind the last byte taken.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
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

// Bytes read from the stream. They lie in the stream's buffer or in the input's own and are gone with the next read,
// unless they are detached into a place of their own.
using CXmlToken = std::string_view;

class CXmlInput {
public:
    explicit CXmlInput(std::istream& stream) : stream_(stream), ended_(stream.eof()) {}
    CXmlInput(const CXmlInput&) = delete;
    CXmlInput& operator=(const CXmlInput&) = delete;
    ~CXmlInput() { GiveBack(); }

    // Sets the stream's end state once there is nothing more.
    [[nodiscard]] bool AtEnd() { return at_ == end_ && !Refill(); }
    // The next byte, left where it is; 0xFF at the end.
    [[nodiscard]] char Peek() { return AtEnd() ? '\xFF' : *at_; }
    // Taking the next byte makes earlier tokens invalid when it is the last in the window.
    [[nodiscard]] bool IsWindowUsedUp() const { return at_ == end_; }

    // Goes to the next such byte or the end.
    void SkipTo(char byte, bool consume);
    void SkipTo(const XmlByteSet& set, bool consume);
    // Passes bytes of the set and gives their number.
    std::size_t SkipSet(const XmlByteSet& set);

    // The bytes up to the first one of the set, which stays; empty at the end.
    [[nodiscard]] CXmlToken ReadToken(char delimiter);
    [[nodiscard]] CXmlToken ReadToken(const XmlByteSet& delimiters);

    // True when a token found no memory.
    [[nodiscard]] bool HasFailed() const { return failed_; }
    void Fail() { failed_ = true; }
    // Takes a copy that later reads leave alone.
    [[nodiscard]] CXmlToken Detach(CXmlToken token, CXmlVector<char>& place);

private:
    template <class Find>
    CXmlToken ReadUpTo(Find find);
    [[nodiscard]] bool Refill();
    void GiveBack();

    std::istream& stream_;
    const char* begin_ = nullptr;
    const char* at_ = nullptr;
    const char* end_ = nullptr;
    char single_ = 0; // the window of a stream that has no buffer
    bool ended_;
    bool failed_ = false;
    CXmlVector<char> gathered_; // a token that goes on behind a window
};

} // namespace partkeep
