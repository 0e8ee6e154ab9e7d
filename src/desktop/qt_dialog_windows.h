// Dialog windows of the desktop: any dialog from its template, by Qt's widgets.
#pragma once

#include "desktop/hosted_control_factory.h"
#include "platform/dialog_window.h"

#include <memory>

namespace partkeep {

class CQtDialogWindows : public IDialogWindows {
public:
    // `controls` makes all hosted controls but the picture control; null: there are none. It must outlive the
    // windows.
    explicit CQtDialogWindows(IQtControlFactory* controls) : controls_(controls) {}

    [[nodiscard]] std::unique_ptr<IDialogWindow> Make(const DialogTemplate& dialog) override;

private:
    IQtControlFactory* controls_;
};

} // namespace partkeep
