// Messages where there is no screen: to standard error, answered at once.
#pragma once

#include "platform/messages.h"

namespace partkeep {

class CStderrMessages final : public IMessages {
public:
    // One write of "title: text" and a line end, in UTF-8. A character that would steer a terminal is shown as
    // U+FFFD, since texts carry names from a part library.
    void Show(const Message& message) override;
};

} // namespace partkeep
