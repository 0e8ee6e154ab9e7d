// Controls of the component model in windows of ours: made by class id, called by dispatch id, listened to.
#pragma once

#include "platform/control.h"

#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace partkeep {

class CSiteContent;

struct ControlOrder {
    CLSID class_id{};
    bool visible = true;
    std::optional<SIZE> extent; // in 1/100 mm; else that of the site
};

// Fills a site window with a control. Null when it cannot be created, or not on this thread: the pointers that
// travel through the calls are good in this apartment alone, so a control that would live in another is refused.
[[nodiscard]] std::shared_ptr<CSiteContent> CreateControlInSite(HWND site, const ControlOrder& order);

// The interface to what fills a site window.
[[nodiscard]] std::unique_ptr<IHostedControl> MakeHostedControl(std::shared_ptr<CSiteContent> content);

[[nodiscard]] CLSID SystemClassId(const ClassId& id);

class CHiddenControls final : public IHiddenControls {
public:
    explicit CHiddenControls(HINSTANCE module) : module_(module) {}

    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHidden(const ClassId& class_id, std::int32_t control_id,
                                                               int width, int height) override;

private:
    HINSTANCE module_;
};

} // namespace partkeep
