#include "xml/xml_input.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <streambuf>

namespace partkeep {

namespace {

// Reaches the get area of any stream buffer: the standard lets a derived class name the protected members.
class GetArea : public std::streambuf {
public:
    static const char* At(const std::streambuf& buffer) { return (buffer.*(&GetArea::gptr))(); }
    static const char* End(const std::streambuf& buffer) { return (buffer.*(&GetArea::egptr))(); }

    static void Take(std::streambuf& buffer, std::ptrdiff_t count)
    {
        constexpr std::ptrdiff_t most = std::numeric_limits<int>::max();
        for (; count > 0; count -= most) {
            (buffer.*(&GetArea::gbump))(static_cast<int>(std::min(count, most)));
        }
    }
};

const char* FindByte(const char* at, const char* end, char byte)
{
    const void* found = std::memchr(at, byte, static_cast<std::size_t>(end - at));
    return found == nullptr ? end : static_cast<const char*>(found);
}

const char* FindByte(const char* at, const char* end, const XmlByteSet& set)
{
    while (at != end && !set.Has(*at)) {
        ++at;
    }
    return at;
}

} // namespace

bool CXmlInput::Refill()
{
    if (ended_) {
        return false;
    }
    GiveBack();
    std::streambuf* buffer = stream_.rdbuf();
    using Traits = std::streambuf::traits_type;
    Traits::int_type next = Traits::eof();
    try {
        next = buffer == nullptr ? Traits::eof() : buffer->sgetc();
    } catch (...) {
        stream_.setstate(std::ios_base::badbit); // as the stream's own reads do
    }
    if (Traits::eq_int_type(next, Traits::eof())) {
        ended_ = true;
        stream_.setstate(std::ios_base::eofbit);
        return false;
    }
    begin_ = GetArea::At(*buffer);
    end_ = GetArea::End(*buffer);
    if (begin_ == end_) {
        single_ = Traits::to_char_type(next);
        begin_ = &single_;
        end_ = begin_ + 1;
    }
    at_ = begin_;
    return true;
}

// Tells the stream what was taken from the window.
void CXmlInput::GiveBack()
{
    if (at_ == begin_) {
        return;
    }
    if (begin_ == &single_) {
        try {
            stream_.rdbuf()->sbumpc();
        } catch (...) {
            stream_.setstate(std::ios_base::badbit);
        }
    } else {
        GetArea::Take(*stream_.rdbuf(), at_ - begin_);
    }
    begin_ = at_;
}

void CXmlInput::SkipTo(char byte, bool consume)
{
    while (!AtEnd()) {
        at_ = FindByte(at_, end_, byte);
        if (at_ != end_) {
            at_ += consume ? 1 : 0;
            return;
        }
    }
}

void CXmlInput::SkipTo(const XmlByteSet& set, bool consume)
{
    while (!AtEnd()) {
        at_ = FindByte(at_, end_, set);
        if (at_ != end_) {
            at_ += consume ? 1 : 0;
            return;
        }
    }
}

std::size_t CXmlInput::SkipSet(const XmlByteSet& set)
{
    std::size_t count = 0;
    for (; !AtEnd() && set.Has(*at_); ++at_) {
        ++count;
    }
    return count;
}

template <class Find>
CXmlToken CXmlInput::ReadUpTo(Find find)
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
    for (;;) {
        failed_ = failed_ || !gathered_.AddRun(start, static_cast<std::size_t>(at_ - start));
        if (at_ != end_ || AtEnd() || failed_) {
            return {gathered_.begin(), gathered_.Size()};
        }
        start = at_;
        at_ = find(at_, end_);
    }
}

CXmlToken CXmlInput::ReadToken(char delimiter)
{
    return ReadUpTo([=](const char* at, const char* end) { return FindByte(at, end, delimiter); });
}

CXmlToken CXmlInput::ReadToken(const XmlByteSet& delimiters)
{
    return ReadUpTo([&](const char* at, const char* end) { return FindByte(at, end, delimiters); });
}

CXmlToken CXmlInput::Detach(CXmlToken token, CXmlVector<char>& place)
{
    place.Clear();
    if (!place.AddRun(token.data(), token.size())) {
        failed_ = true;
        return {};
    }
    return {place.begin(), place.Size()};
}

} // namespace partkeep
