// The tool bar of a dialog window. Borrows the window's frame and what it tells its events to.
#pragma once

#include "desktop/dialog_frame.h"
#include "desktop/qt_dialog_events.h"
#include "platform/dialog_window.h"

#include <QPointer>

namespace partkeep {

class CQtToolbar;

class CQtDialogToolbar : public IToolbar {
public:
    CQtDialogToolbar(const QPointer<CDialogFrame>& frame, CQtDialogEvents& events) : frame_(frame), events_(events) {}

    bool CreateToolbar(const ToolbarTemplate& toolbar) override;
    [[nodiscard]] Rect ClientRectBesideToolbar() const override;
    void MoveAllControls(int dx, int dy) override;
    void PlaceToolbar() override;
    void EnableToolTips() override;
    void PressTool(int command, bool pressed) override;

private:
    const QPointer<CDialogFrame>& frame_;
    CQtDialogEvents& events_;
    QPointer<CQtToolbar> bar_;
};

} // namespace partkeep
