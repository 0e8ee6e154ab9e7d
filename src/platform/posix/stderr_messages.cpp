#include "platform/posix/stderr_messages.h"

#include "platform/posix/utf8.h"

#include <algorithm>
#include <cstdio>

namespace partkeep {

namespace {

bool SteersTerminal(char16_t unit)
{
    return (unit < 0x20 && unit != u'\n' && unit != u'\t') || (unit >= 0x7F && unit < 0xA0);
}

} // namespace

void CStderrMessages::Show(const Message& message)
{
    std::u16string line = message.title + u": " + message.text;
    std::erase(line, u'\r');
    std::replace_if(line.begin(), line.end(), SteersTerminal, u'\uFFFD');
    line += u'\n';
    const std::string bytes = NarrowToUtf8(line);
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

} // namespace partkeep
