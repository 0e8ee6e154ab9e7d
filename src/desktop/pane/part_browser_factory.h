// Makes the part browser for dialogs: a session on the configured libraries, and the pane that draws it.
#pragma once

#include "desktop/hosted_control_factory.h"
#include "partlibrary/session/library_folder.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace partkeep {

class CPartBrowserFactory : public IQtControlFactory {
public:
    // `language` gives the component's language number; asked when a browser is made. `places_file` as for
    // CPanePlaces.
    CPartBrowserFactory(CLibraryFolder folder, std::function<std::int32_t()> language, QString places_file)
        : folder_(std::move(folder)), language_(std::move(language)), places_file_(std::move(places_file))
    {
    }

    // The part browser alone.
    [[nodiscard]] std::unique_ptr<IHostedControl> Create(const ClassId& class_id, QWidget* parent,
                                                         QWidget*& widget) override;

private:
    CLibraryFolder folder_;
    std::function<std::int32_t()> language_;
    QString places_file_;
};

} // namespace partkeep
