#include "platform/text_mode.h"

#include <algorithm>

namespace partkeep {

void FromTextMode(std::string& bytes)
{
    std::size_t kept = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const bool drop = bytes[at] == '\r' && at + 1 < bytes.size() && bytes[at + 1] == '\n';
        if (!drop) {
            bytes[kept++] = bytes[at];
        }
    }
    bytes.resize(kept);
}

std::string ToTextMode(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size() + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
    for (const char byte : text) {
        if (byte == '\n') {
            bytes += '\r';
        }
        bytes += byte;
    }
    return bytes;
}

} // namespace partkeep
