// Any bytes are read without a fault, and to the same end whether they lie in the stream's buffer as a whole or come
// in windows of some width, which the first byte tells.
#include <cstdlib>
#include <istream>
#include <sstream>
#include <string>

#include "tests/xml/watched_memory.h"
#include "xml/xml_reader.h"
#include "xml/xml_writer.h"

namespace {

class Windows : public std::streambuf {
public:
    Windows(std::string_view text, std::size_t width) : text_(text), width_(width) {}

protected:
    int_type underflow() override
    {
        window_ = text_.substr(at_, width_);
        at_ += window_.size();
        setg(window_.data(), window_.data(), window_.data() + window_.size());
        return window_.empty() ? traits_type::eof() : traits_type::to_int_type(window_[0]);
    }

private:
    std::string text_;
    std::string window_;
    std::size_t width_;
    std::size_t at_ = 0;
};

std::string ReadAndWrite(std::istream& stream)
{
    partkeep::CXmlDocument document;
    std::ostringstream written;
    const bool read = partkeep::ReadXml(stream, document);
    if (read != partkeep::WriteXml(written, document)) {
        std::abort();
    }
    std::ostringstream rest;
    rest << stream.rdbuf();
    return written.str() + "\n" + rest.str();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    std::istringstream whole(text);
    Windows windows(text, std::size_t{data[0]} + 1);
    std::istream parts(&windows);
    if (ReadAndWrite(whole) != ReadAndWrite(parts) || watched_memory::LivePieces() != 0) {
        std::abort();
    }
    return 0;
}
