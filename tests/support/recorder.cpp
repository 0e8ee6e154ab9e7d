#include "tests/support/recorder.h"

#include "platform/text.h"

namespace partkeep {

std::string Quoted(std::u16string_view text)
{
    return "'" + NarrowText(text, utf8_code_page) + "'";
}

void CRecordingMessages::Show(const Message& message)
{
    std::string line = "message " + Quoted(message.text) + " " + Quoted(message.title);
    recorder_.Note(message.kind == MessageKind::Exclamation ? line + " exclamation" : line);
}

} // namespace partkeep
