#include "partdata/plain_message.h"

#include <utility>

namespace partkeep {

void ShowPlainMessage(IMessages& messages, std::u16string text)
{
    messages.Show({std::move(text), LoadLocalString(LocalString::MessageTitle), MessageKind::Plain});
}

void ShowPlainMessage(IMessages& messages, LocalString text)
{
    ShowPlainMessage(messages, LoadLocalString(text));
}

} // namespace partkeep
