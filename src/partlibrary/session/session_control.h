// A browser session behind the contract: takes calls by dispatch id with typed arguments, checks them against
// the contract's table, and stops every exception. The session is shared with the pane that draws it, if any.
#pragma once

#include "partlibrary/session/browser_session.h"
#include "platform/control.h"

#include <functional>
#include <memory>

namespace partkeep {

class CSessionControl : public IHostedControl {
public:
    explicit CSessionControl(std::shared_ptr<CBrowserSession> session);
    ~CSessionControl() override;

    ControlResult Invoke(std::int32_t dispatch_id, InvokeKind kind, std::span<const ControlArgument> arguments,
                         ControlType result) override;
    void SetEventSink(std::function<void(std::int32_t)> sink) override;

    [[nodiscard]] CBrowserSession& Session() { return *session_; }

private:
    void OnClick();

    std::shared_ptr<CBrowserSession> session_;
    std::function<void(std::int32_t)> sink_;
    int calls_ = 0; // calls of the contract that are under way
};

// Part browsers that are never shown, on the libraries of one folder. Other class ids give none.
class CPartBrowserControls : public IHiddenControls {
public:
    explicit CPartBrowserControls(CLibraryFolder folder) : folder_(std::move(folder)) {}

    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHidden(const ClassId& class_id, std::int32_t control_id,
                                                               int width, int height) override;

private:
    CLibraryFolder folder_;
};

} // namespace partkeep
