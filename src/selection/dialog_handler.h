// What the logic of a dialog answers to. Nothing outside this folder calls it: events come through its entrance,
// one at a time, at a moment at which the dialog can take them, and what a handler throws ends there.
#pragma once

#include "platform/dialog_window.h"

#include <string>

namespace partkeep {

class IDialogHandler {
public:
    virtual ~IDialogHandler() = default;

    virtual void OnInitDialog() = 0;

    // Keys that the dialog takes before any control sees them; the others are left to the window.
    [[nodiscard]] virtual bool TakesKey(const KeyPress&) const { return false; }
    virtual void OnKey(const KeyPress&) {}

    virtual void OnCommand(int id) = 0;
    virtual void OnSelectionChange(int /*id*/) {}
    virtual void OnTextChange(int /*id*/) {}
    virtual void OnBrowserClick() {}
    virtual void OnBrowserClickFailed() {} // the run goes on
    virtual void OnPaint() {}
    virtual void OnDestroy() {} // once, while the controls still exist

    [[nodiscard]] virtual std::u16string ToolTipText(int /*command*/) { return {}; }
};

} // namespace partkeep
