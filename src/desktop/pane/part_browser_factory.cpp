#include "desktop/pane/part_browser_factory.h"

#include "controls/part_browser_contract.h"
#include "desktop/pane/browser_pane.h"
#include "partlibrary/session/session_control.h"

namespace partkeep {

std::unique_ptr<IHostedControl> CPartBrowserFactory::Create(const ClassId& class_id, QWidget* parent, QWidget*& widget)
{
    if (class_id != part_browser_class_id) {
        return nullptr;
    }
    auto session = std::make_shared<CBrowserSession>(folder_);
    widget = new CBrowserPane(session, {InterfaceLanguageOf(language_()), places_file_}, parent);
    return std::make_unique<CSessionControl>(std::move(session));
}

} // namespace partkeep
