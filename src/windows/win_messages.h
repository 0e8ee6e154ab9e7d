// Message boxes of the system, bound to an owner window.
#pragma once

#include "platform/messages.h"

#include <windows.h>

namespace partkeep {

class CWinMessages final : public IMessages {
public:
    // Null: the message has no owner.
    explicit CWinMessages(HWND owner) : owner_(owner) {}

    void Show(const Message& message) override;

private:
    HWND owner_;
};

// Owned by whichever window is the thread's main one when the message comes.
class CThreadMessages final : public IMessages {
public:
    void Show(const Message& message) override;
};

} // namespace partkeep
