// A message to the user as nearly all of them are shown: no icon, under the system's own title in the language
// of the moment.
#pragma once

#include "platform/messages.h"
#include "settings/local_strings.h"

#include <string>

namespace partkeep {

void ShowPlainMessage(IMessages& messages, std::u16string text);
void ShowPlainMessage(IMessages& messages, LocalString text);

} // namespace partkeep
