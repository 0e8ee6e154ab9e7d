// Base of the two control classes: owns one hosted control and holds the one way to call it.
// With no control attached every call does nothing and answers false, 0 or empty text.
#pragma once

#include "platform/control.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace partkeep {

class CControlWrapper {
public:
    CControlWrapper() = default;
    virtual ~CControlWrapper() = default;
    CControlWrapper(const CControlWrapper&) = delete;
    CControlWrapper& operator=(const CControlWrapper&) = delete;

    // Takes the control over; null leaves the wrapper empty.
    void Attach(std::unique_ptr<IHostedControl> control) { control_ = std::move(control); }
    void Detach() { control_.reset(); }
    [[nodiscard]] bool HasControl() const { return control_ != nullptr; }

    void SetEventSink(std::function<void(std::int32_t)> sink)
    {
        if (control_ != nullptr) {
            control_->SetEventSink(std::move(sink));
        }
    }

protected:
    // The one way to the control: calls the operation of one row of its contract.
    template <typename Row, typename... Given>
    auto InvokeHelper(Given... given)
    {
        return Row::Invoke(control_.get(), given...);
    }

private:
    std::unique_ptr<IHostedControl> control_;
};

} // namespace partkeep
