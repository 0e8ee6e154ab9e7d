// What a handler switches on a window for as long as it runs, put back on every way out.
#pragma once

#include "platform/dialog_window.h"

#include <utility>

namespace partkeep {

// Does something where nothing may be thrown: what it throws is dropped.
template <typename Action>
void Quietly(const Action& action) noexcept
{
    try {
        action();
    } catch (...) {
        return;
    }
}

// Does something last, and does it where what comes before throws.
template <typename Action>
class CLastly {
public:
    explicit CLastly(Action action) : action_(std::move(action)) {}
    ~CLastly() { Quietly(action_); }
    CLastly(const CLastly&) = delete;
    CLastly& operator=(const CLastly&) = delete;

private:
    Action action_;
};

// The wait cursor.
class CWaitIndication {
public:
    explicit CWaitIndication(IDialogWindow& window) : window_(window) { window_.BeginWait(); }
    ~CWaitIndication()
    {
        Quietly([this] { window_.EndWait(); });
    }
    CWaitIndication(const CWaitIndication&) = delete;
    CWaitIndication& operator=(const CWaitIndication&) = delete;

private:
    IDialogWindow& window_;
};

// The window's owner takes no input.
class COwnerDisabled {
public:
    explicit COwnerDisabled(IDialogWindow& window) : window_(window) { window_.EnableOwner(false); }
    ~COwnerDisabled()
    {
        Quietly([this] { window_.EnableOwner(true); });
    }
    COwnerDisabled(const COwnerDisabled&) = delete;
    COwnerDisabled& operator=(const COwnerDisabled&) = delete;

private:
    IDialogWindow& window_;
};

} // namespace partkeep
