// What the host object asks of its platform, on the desktop: registry files, messages, part browsers and windows.
#pragma once

#include "desktop/qt_application.h"
#include "desktop/qt_dialog_windows.h"
#include "desktop/qt_messages.h"
#include "host/host_services.h"
#include "platform/control.h"
#include "platform/posix/ini_registry.h"

#include <memory>

namespace partkeep {

// Makes sure of an application before a message or a window is wanted, and hands on.
class CDesktopMessages : public IMessages {
public:
    explicit CDesktopMessages(CQtApplication& application) : application_(application) {}
    void Show(const Message& message) override;

private:
    CQtApplication& application_;
};

class CDesktopWindows : public IDialogWindows {
public:
    CDesktopWindows(CQtApplication& application, IQtControlFactory* controls)
        : application_(application), windows_(controls)
    {
    }
    [[nodiscard]] std::unique_ptr<IDialogWindow> Make(const DialogTemplate& dialog) override;

private:
    CQtApplication& application_;
    CQtDialogWindows windows_;
};

// Part browsers on the libraries of the folder that is configured at the moment they are made.
class CDesktopControls : public IHiddenControls {
public:
    explicit CDesktopControls(const IRegistry& registry) : registry_(registry) {}
    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHidden(const ClassId& class_id, std::int32_t control_id,
                                                               int width, int height) override;

private:
    const IRegistry& registry_;
};

// Part browsers in dialogs, on the same libraries.
class CDesktopBrowsers : public IQtControlFactory {
public:
    explicit CDesktopBrowsers(const IRegistry& registry) : registry_(registry) {}
    [[nodiscard]] std::unique_ptr<IHostedControl> Create(const ClassId& class_id, QWidget* parent,
                                                         QWidget*& widget) override;

private:
    const IRegistry& registry_;
};

class CDesktopServices {
public:
    CDesktopServices();

    [[nodiscard]] HostServices Services() { return {registry_, messages_, controls_, windows_}; }

private:
    CQtApplication application_;
    CIniRegistry registry_;
    CDesktopMessages messages_;
    CDesktopControls controls_;
    CDesktopBrowsers browsers_;
    CDesktopWindows windows_;
};

} // namespace partkeep
