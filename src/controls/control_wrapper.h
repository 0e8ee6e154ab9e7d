// Base of the two control classes: owns one hosted control and holds the one way to call it.
// With no control attached every call does nothing and answers false, 0 or empty text.
#pragma once

#include "platform/control.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

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

    void SetEventSink(std::function<void(std::int32_t)> sink);
    void SetCallWatch(ICallWatch* watch) { watch_ = watch; } // borrowed; null for none

protected:
    using Arguments = std::initializer_list<ControlArgument>;

    // The one way to the control. A result of another type than asked for counts as none.
    [[nodiscard]] ControlResult InvokeHelper(std::int32_t dispatch_id, InvokeKind kind, ControlType result,
                                             Arguments arguments);

    void InvokeNone(std::int32_t dispatch_id, Arguments arguments = {}, InvokeKind kind = InvokeKind::Method);
    bool InvokeBool(std::int32_t dispatch_id, Arguments arguments = {});
    std::int16_t InvokeInt16(std::int32_t dispatch_id, Arguments arguments = {});
    std::int32_t InvokeInt32(std::int32_t dispatch_id, Arguments arguments = {});
    std::u16string InvokeText(std::int32_t dispatch_id, Arguments arguments = {}, InvokeKind kind = InvokeKind::Method);

    static ControlArgument Text(std::u16string_view text) { return {ControlType::Text, text}; }
    static ControlArgument Int16(std::int16_t value) { return {ControlType::Int16, value}; }
    static ControlArgument Int16Ref(std::int16_t* values)
    {
        return {ControlType::Int16Ref, static_cast<void*>(values)};
    }
    static ControlArgument Int32Ref(std::int32_t* value) { return {ControlType::Int32Ref, static_cast<void*>(value)}; }
    static ControlArgument TextRef(void* text) { return {ControlType::TextRef, text}; }
    static ControlArgument UnknownRef(void* block) { return {ControlType::UnknownRef, block}; }
    static ControlArgument Unknown(void* object) { return {ControlType::Unknown, object}; }

private:
    std::shared_ptr<IHostedControl> control_; // shared with the calls under way
    ICallWatch* watch_ = nullptr;
};

} // namespace partkeep
