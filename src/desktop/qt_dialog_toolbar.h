// The tool bar of a dialog window. Borrows the window's frame and what it tells its events to.
#pragma once

#include "desktop/dialog_frame.h"
#include "platform/dialog_window.h"

#include <functional>

namespace partkeep {

class CQtToolbar;

class CQtDialogToolbar : public IToolbar {
public:
    CQtDialogToolbar(const QPointer<CDialogFrame>& frame, IDialogEvents* const& events,
                     std::function<void(int)> command)
        : frame_(frame), events_(events), command_(std::move(command))
    {
    }

    bool CreateToolbar(const ToolbarTemplate& toolbar) override;
    [[nodiscard]] Rect ClientRectBesideToolbar() const override;
    void MoveAllControls(int dx, int dy) override;
    void PlaceToolbar() override;
    void EnableToolTips() override;
    void PressTool(int command, bool pressed) override;

private:
    const QPointer<CDialogFrame>& frame_;
    IDialogEvents* const& events_;
    std::function<void(int)> command_; // a tool was pressed
    QPointer<CQtToolbar> bar_;
};

} // namespace partkeep
