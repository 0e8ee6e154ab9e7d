// What the host object asks of its platform, on the desktop: registry files and part browsers from here, messages and
// windows from the part that draws, once there is one due and a screen for it.

#include "interface/owned_services.h"
#include "interface/screen.h"
#include "interface/windows_library.h"
#include "partlibrary/session/library_folder.h"
#include "partlibrary/session/session_control.h"
#include "platform/posix/ini_registry.h"
#include "platform/posix/stderr_messages.h"

#include <stdexcept>

namespace partkeep {

namespace {

class CDesktopMessages : public IMessages {
public:
    explicit CDesktopMessages(CWindowsLibrary& library) : library_(library) {}

    void Show(const Message& message) override
    {
        if (IMessages* boxes = Boxes()) {
            boxes->Show(message);
        } else {
            CStderrMessages().Show(message);
        }
    }

private:
    // Null where nothing can be shown.
    IMessages* Boxes()
    {
        const ScreenAnswer screen = FindScreen(library_);
        IWindowsPart* part = screen.problem.empty() ? library_.Part() : nullptr;
        return part != nullptr ? &part->Messages() : nullptr;
    }

    CWindowsLibrary& library_;
};

class CDesktopWindows : public IDialogWindows {
public:
    explicit CDesktopWindows(CWindowsLibrary& library) : library_(library) {}

    // Throws where no window can be shown: the host object makes of it what it makes of all trouble.
    std::unique_ptr<IDialogWindow> Make(const DialogTemplate& dialog) override
    {
        const ScreenAnswer screen = FindScreen(library_);
        IWindowsPart* part = screen.problem.empty() ? library_.Part() : nullptr;
        if (part == nullptr) {
            const std::u16string_view problem = screen.problem.empty() ? library_missing_text : screen.problem;
            CStderrMessages().Show({u"No window can be shown: " + std::u16string(problem), u"Partkeep Read"});
            throw std::runtime_error("no window can be shown");
        }
        return part->Windows().Make(dialog);
    }

private:
    CWindowsLibrary& library_;
};

// Part browsers on the libraries of the folder that is configured at the moment they are made.
class CDesktopControls : public IHiddenControls {
public:
    explicit CDesktopControls(const IRegistry& registry) : registry_(registry) {}

    std::unique_ptr<IHostedControl> CreateHidden(const ClassId& class_id, std::int32_t control_id, int width,
                                                 int height) override
    {
        CPartBrowserControls browsers{CLibraryFolder::Configured(registry_)};
        return browsers.CreateHidden(class_id, control_id, width, height);
    }

private:
    const IRegistry& registry_;
};

class CDesktopServices : public IOwnedServices {
public:
    CDesktopServices() { ApplySystemCodePage(registry_); }

    HostServices Services() override { return {registry_, messages_, controls_, windows_}; }

private:
    CIniRegistry registry_ = CIniRegistry::AtConventionalPaths();
    CWindowsLibrary library_{registry_};
    CDesktopMessages messages_{library_};
    CDesktopControls controls_{registry_};
    CDesktopWindows windows_{library_};
};

} // namespace

std::unique_ptr<IOwnedServices> MakeOwnedServices()
{
    return std::make_unique<CDesktopServices>();
}

} // namespace partkeep
