#include "controls/control_wrapper.h"

namespace partkeep {

namespace {

template <typename T>
T ValueOr(ControlResult&& result, T fallback)
{
    T* value = std::get_if<T>(&result);
    return value != nullptr ? std::move(*value) : std::move(fallback);
}

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

} // namespace

void CControlWrapper::SetEventSink(std::function<void(std::int32_t)> sink)
{
    if (control_ != nullptr) {
        control_->SetEventSink(std::move(sink));
    }
}

ControlResult CControlWrapper::InvokeHelper(std::int32_t dispatch_id, InvokeKind kind, ControlType result,
                                            Arguments arguments)
{
    const std::shared_ptr<IHostedControl> control = control_; // the window may go while the call runs
    if (control == nullptr) {
        return {};
    }
    const CWatchedCall watched(watch_);
    return control->Invoke(dispatch_id, kind, {arguments.begin(), arguments.size()}, result);
}

void CControlWrapper::InvokeNone(std::int32_t dispatch_id, Arguments arguments, InvokeKind kind)
{
    static_cast<void>(InvokeHelper(dispatch_id, kind, ControlType::None, arguments));
}

// A control's true is -1, the callers' is 1.
bool CControlWrapper::InvokeBool(std::int32_t dispatch_id, Arguments arguments)
{
    return ValueOr<std::int16_t>(InvokeHelper(dispatch_id, InvokeKind::Method, ControlType::Bool, arguments), 0) != 0;
}

std::int16_t CControlWrapper::InvokeInt16(std::int32_t dispatch_id, Arguments arguments)
{
    return ValueOr<std::int16_t>(InvokeHelper(dispatch_id, InvokeKind::Method, ControlType::Int16, arguments), 0);
}

std::int32_t CControlWrapper::InvokeInt32(std::int32_t dispatch_id, Arguments arguments)
{
    return ValueOr<std::int32_t>(InvokeHelper(dispatch_id, InvokeKind::Method, ControlType::Int32, arguments), 0);
}

std::u16string CControlWrapper::InvokeText(std::int32_t dispatch_id, Arguments arguments, InvokeKind kind)
{
    return ValueOr<std::u16string>(InvokeHelper(dispatch_id, kind, ControlType::Text, arguments), {});
}

} // namespace partkeep
