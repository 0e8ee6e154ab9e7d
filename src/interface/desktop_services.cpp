#include "interface/desktop_services.h"

#include "desktop/pane/pane_places.h"
#include "desktop/pane/part_browser_factory.h"
#include "partlibrary/session/library_folder.h"
#include "partlibrary/session/session_control.h"
#include "settings/process_values.h"

namespace partkeep {

void CDesktopMessages::Show(const Message& message)
{
    application_.Ensure();
    CQtMessages().Show(message);
}

std::unique_ptr<IDialogWindow> CDesktopWindows::Make(const DialogTemplate& dialog)
{
    application_.Ensure();
    return windows_.Make(dialog);
}

std::unique_ptr<IHostedControl> CDesktopControls::CreateHidden(const ClassId& class_id, std::int32_t control_id,
                                                               int width, int height)
{
    CPartBrowserControls browsers{CLibraryFolder(ConfiguredLibraryFolder(registry_))};
    return browsers.CreateHidden(class_id, control_id, width, height);
}

std::unique_ptr<IHostedControl> CDesktopBrowsers::Create(const ClassId& class_id, QWidget* parent, QWidget*& widget)
{
    CPartBrowserFactory browsers(
        CLibraryFolder(ConfiguredLibraryFolder(registry_)), [] { return TheProcessValues().languageId; },
        CPanePlaces::UsersFile());
    return browsers.Create(class_id, parent, widget);
}

CDesktopServices::CDesktopServices()
    : registry_(CIniRegistry::AtConventionalPaths()), messages_(application_), controls_(registry_),
      browsers_(registry_), windows_(application_, &browsers_)
{
    ApplySystemCodePage(registry_);
}

} // namespace partkeep
