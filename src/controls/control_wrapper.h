// Base of the two control classes: owns one hosted control and holds the one way to call it.
// With no control attached every call does nothing and answers false, 0 or empty text.
#pragma once

#include "platform/control.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace partkeep {

// Hears of each call of a control, nested ones too.
class ICallWatch {
public:
    virtual ~ICallWatch() = default;

    virtual void CallBegins() noexcept = 0;
    virtual void CallEnds() noexcept = 0;
};

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
    void SetCallWatch(ICallWatch* watch) { watch_ = watch; } // borrowed; null for none

protected:
    // The one way to the control: calls the operation of one row of its contract.
    template <typename Row, typename... Given>
    auto InvokeHelper(Given... given)
    {
        const std::shared_ptr<IHostedControl> control = control_; // the window may go while the call runs
        const CWatchedCall watched(control != nullptr ? watch_ : nullptr);
        return Row::Invoke(control.get(), given...);
    }

private:
    class CWatchedCall {
    public:
        explicit CWatchedCall(ICallWatch* watch) : watch_(watch)
        {
            if (watch_ != nullptr) {
                watch_->CallBegins();
            }
        }
        ~CWatchedCall()
        {
            if (watch_ != nullptr) {
                watch_->CallEnds();
            }
        }
        CWatchedCall(const CWatchedCall&) = delete;
        CWatchedCall& operator=(const CWatchedCall&) = delete;

    private:
        ICallWatch* watch_;
    };

    std::shared_ptr<IHostedControl> control_; // shared with the calls under way
    ICallWatch* watch_ = nullptr;
};

} // namespace partkeep
