#include "xml/xml_input.h"

#include <algorithm>
#include <limits>
#include <streambuf>

namespace partkeep {

namespace {

// Reaches the get area of any stream buffer: the standard lets a derived class name the protected members.
class CGetArea : public std::streambuf {
public:
    static const char* At(const std::streambuf& buffer) { return (buffer.*(&CGetArea::gptr))(); }
    static const char* End(const std::streambuf& buffer) { return (buffer.*(&CGetArea::egptr))(); }

    static void Take(std::streambuf& buffer, std::ptrdiff_t count)
    {
        constexpr std::ptrdiff_t most = std::numeric_limits<int>::max();
        for (; count > 0; count -= most) {
            (buffer.*(&CGetArea::gbump))(static_cast<int>(std::min(count, most)));
        }
    }
};

} // namespace

bool CXmlInput::Refill()
{
    if (ended_) {
        return false;
    }
    DetachFromWindow();
    GiveBack();
    std::streambuf* buffer = stream_->rdbuf();
    using Traits = std::streambuf::traits_type;
    Traits::int_type next = Traits::eof();
    try {
        next = ended_ ? next : buffer->sgetc(); // there is a buffer, or the stream would be bad
    } catch (...) {
        stream_->setstate(std::ios_base::badbit); // as the stream's own reads do
    }
    if (Traits::eq_int_type(next, Traits::eof())) {
        ended_ = true;
        stream_->setstate(std::ios_base::eofbit);
        return false;
    }
    begin_ = CGetArea::At(*buffer);
    end_ = CGetArea::End(*buffer);
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
    if (at_ == begin_ || stream_ == nullptr) {
        return;
    }
    if (begin_ == &single_) {
        try {
            stream_->rdbuf()->sbumpc();
        } catch (...) {
            stream_->setstate(std::ios_base::badbit);
            ended_ = true; // or the same byte would come for ever
        }
    } else {
        CGetArea::Take(*stream_->rdbuf(), at_ - begin_);
    }
    begin_ = at_;
}

bool CXmlInput::Gather(const char* start)
{
    failed_ = failed_ || !gathered_.AddRun(start, static_cast<std::size_t>(at_ - start));
    return !failed_ && at_ == end_ && !AtEnd();
}

// The window goes, and what is held must stay.
void CXmlInput::DetachFromWindow()
{
    for (HeldToken& held : held_) {
        if (held.token.data() != held.copy.begin()) {
            Detach(held);
        }
    }
}

void CXmlInput::Detach(HeldToken& held)
{
    held.copy.Clear();
    failed_ = failed_ || !held.copy.AddRun(held.token.data(), held.token.size());
    held.token = failed_ ? CXmlToken() : CXmlToken(held.copy.begin(), held.copy.Size());
}

} // namespace partkeep
