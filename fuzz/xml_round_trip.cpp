// From the first written text on, what is written stays the same. The first byte tells the format.
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>

#include "tests/xml/watched_memory.h"
#include "xml/xml_reader.h"
#include "xml/xml_writer.h"

namespace {

std::optional<std::string> Rewrite(const std::string& text, std::uint8_t pretty)
{
    std::istringstream input(text);
    std::ostringstream output;
    partkeep::CXmlDocument document;
    document.pretty = pretty;
    return partkeep::ReadXml(input, document) && partkeep::WriteXml(output, document) ? std::optional(output.str())
                                                                                      : std::nullopt;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::uint8_t pretty = data[0] & 1;
    const auto first = Rewrite(std::string(reinterpret_cast<const char*>(data) + 1, size - 1), pretty);
    if (first && Rewrite(*first, pretty) != first) {
        std::abort();
    }
    if (watched_memory::live_pieces != 0) {
        std::abort();
    }
    return 0;
}
