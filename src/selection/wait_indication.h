// Shows the wait cursor of a dialog for a scope.
#pragma once

#include "platform/dialog_window.h"

namespace partkeep {

class CWaitIndication {
public:
    explicit CWaitIndication(IDialogWindow& window) : window_(window) { window_.BeginWait(); }
    ~CWaitIndication() { window_.EndWait(); }
    CWaitIndication(const CWaitIndication&) = delete;
    CWaitIndication& operator=(const CWaitIndication&) = delete;

private:
    IDialogWindow& window_;
};

} // namespace partkeep
