#include "host/windows_part.h"

#include "desktop/pane/pane_places.h"
#include "desktop/pane/part_browser_factory.h"
#include "desktop/qt_application.h"
#include "desktop/qt_dialog_windows.h"
#include "desktop/qt_messages.h"
#include "partlibrary/session/library_folder.h"
#include "settings/process_values.h"

namespace partkeep {

namespace {

// Part browsers on the libraries of the folder that is configured at the moment they are made.
class CConfiguredBrowsers : public IQtControlFactory {
public:
    explicit CConfiguredBrowsers(const IRegistry& registry) : registry_(registry) {}

    std::unique_ptr<IHostedControl> Create(const ClassId& class_id, QWidget* parent, QWidget*& widget) override
    {
        CPartBrowserFactory browsers(
            CLibraryFolder::Configured(registry_), [] { return TheProcessValues().languageId; },
            CPanePlaces::UsersFile());
        return browsers.Create(class_id, parent, widget);
    }

private:
    const IRegistry& registry_;
};

class CWindowsPart : public IWindowsPart {
public:
    explicit CWindowsPart(const IRegistry& registry) : browsers_(registry), windows_(&browsers_) {}

    IMessages& Messages() override
    {
        application_.Ensure();
        return messages_;
    }

    IDialogWindows& Windows() override
    {
        application_.Ensure();
        return windows_;
    }

private:
    CQtApplication application_;
    CConfiguredBrowsers browsers_;
    CQtMessages messages_;
    CQtDialogWindows windows_;
};

} // namespace

} // namespace partkeep

extern "C" partkeep::IWindowsPart* partkeep_make_windows_part(const partkeep::IRegistry& registry)
{
    try {
        return std::make_unique<partkeep::CWindowsPart>(registry).release();
    } catch (...) {
        return nullptr;
    }
}

static_assert(std::is_same_v<decltype(partkeep_make_windows_part), partkeep::MakeWindowsPart>);
