// Any bytes are read without a fault, and to the same end whether they lie in the stream's buffer as a whole or come
// in windows of some width, which the first byte tells. With an allocation failing, which the last byte tells, the
// read ends the same or reports failure.
#include <cstdio>
#include <cstdlib>
#include <istream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "tests/xml/watched_memory.h"
#include "xml/xml_reader.h"
#include "xml/xml_writer.h"

namespace {

// Gives its bytes in windows of some width, each gone with the next; 0 for a buffer without a window. Ends as a device
// that is pulled out, where that is wanted.
class Windows : public std::streambuf {
public:
    Windows(std::string_view text, std::size_t width, bool throws) : text_(text), width_(width), throws_(throws) {}

protected:
    int_type underflow() override
    {
        if (at_ == text_.size()) {
            return throws_ ? throw std::runtime_error("pulled out") : traits_type::eof();
        }
        if (width_ == 0) {
            return traits_type::to_int_type(text_[at_]);
        }
        window_ = text_.substr(at_, width_);
        at_ += window_.size();
        setg(window_.data(), window_.data(), window_.data() + window_.size());
        return traits_type::to_int_type(window_[0]);
    }
    int_type uflow() override
    {
        const bool single = width_ == 0 && at_ != text_.size();
        return single ? traits_type::to_int_type(text_[at_++]) : std::streambuf::uflow();
    }

private:
    std::string text_;
    std::string window_;
    std::size_t width_;
    bool throws_;
    std::size_t at_ = 0;
};

struct Outcome {
    bool read;
    std::string text; // what was read, written again, and the rest of the stream behind it
    bool operator==(const Outcome&) const = default;
};

Outcome ReadAndWrite(std::istream& stream)
{
    partkeep::CXmlDocument document;
    const bool read = partkeep::ReadXml(stream, document);
    stream.clear();
    watched_memory::fail_from = 0;
    std::ostringstream written;
    if (read != partkeep::WriteXml(written, document)) {
        std::abort();
    }
    written << "\n" << document.GetCodePage() << "\n" << stream.rdbuf();
    return {read, written.str()};
}

Outcome ReadInWindows(const std::string& text, std::size_t width, bool throws)
{
    Windows windows(text, width, throws);
    std::istream stream(&windows);
    return ReadAndWrite(stream);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t width = data[0];
    std::istringstream stream(text);
    const auto whole = ReadAndWrite(stream);
    const auto in_windows = ReadInWindows(text, width, size % 3 == 0);
    watched_memory::FailFrom(1 + std::size_t{data[size - 1]}, size % 2 == 0);
    const auto in_need = ReadInWindows(text, width, false);
    if (whole != in_windows || (in_need.read && in_need != whole) || watched_memory::live_pieces != 0) {
        std::fprintf(stderr, "not the same in windows of %zu: %s\n", width, text.c_str());
        std::abort();
    }
    return 0;
}
