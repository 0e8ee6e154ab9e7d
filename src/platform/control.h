// A hosted control: a closed component that is reached by class id, dispatch ids and typed arguments, and that
// answers with events. The argument types are those of the automation interface, by its own numbers
// (VARENUM of the Windows headers).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace partkeep {

struct ClassId {
    std::uint32_t data1;
    std::uint16_t data2;
    std::uint16_t data3;
    std::array<std::uint8_t, 8> data4;

    friend bool operator==(const ClassId&, const ClassId&) = default;
};

enum class ControlType : std::uint16_t {
    None = 0,
    Int16 = 2,
    Int32 = 3,
    Float = 4,
    Text = 8,
    Bool = 11,
    Unknown = 13,
    Int16Ref = 0x4000 | 2,
    Int32Ref = 0x4000 | 3,
    TextRef = 0x4000 | 8,
    UnknownRef = 0x4000 | 13,
};

enum class InvokeKind { Method, PropertyGet, PropertyPut };

// An argument. By-reference types carry a plain pointer into the caller's memory, passed on unchanged; the
// control writes what its contract says, whatever the type is called. Text is borrowed for the call.
struct ControlArgument {
    ControlType type = ControlType::None;
    std::variant<std::monostate, std::int16_t, std::int32_t, std::u16string_view, void*> value;
};

// A result. A bool that is true arrives as -1 from a control; nothing here changes it.
using ControlResult = std::variant<std::monostate, std::int16_t, std::int32_t, std::u16string>;

class IHostedControl {
public:
    virtual ~IHostedControl() = default;

    // Calls one operation. monostate when the control refuses or has no result; Bool and Int16 come back as
    // int16_t, Int32 as int32_t, Text as u16string.
    virtual ControlResult Invoke(std::int32_t dispatch_id, InvokeKind kind, std::span<const ControlArgument> arguments,
                                 ControlType result) = 0;

    // Receives the dispatch id of each event; an empty function ends it. Called on the control's thread, from inside
    // Invoke too where the control fires there.
    virtual void SetEventSink(std::function<void(std::int32_t)> sink) = 0;
};

// Makes controls that are never shown, each in a parent window of its own that goes with the control.
class IHiddenControls {
public:
    virtual ~IHiddenControls() = default;

    // Null when the control cannot be created.
    [[nodiscard]] virtual std::unique_ptr<IHostedControl> CreateHidden(const ClassId& class_id, std::int32_t control_id,
                                                                       int width, int height) = 0;
};

} // namespace partkeep
