// Contracts of hosted controls as typed tables: a row an operation, with its dispatch id, the way to invoke it, and its
// result and argument types as a function has them. Both sides come from the row: the call that packs arguments and
// checks what the control answers, and the dispatch that checks a call and hands it to the member of the row's name.
#pragma once

#include "platform/control.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace partkeep {

using ControlText = std::u16string_view;

struct AutomationObject; // an object of the automation interface, handed on unseen

// How a type travels. A pointer to anything without a line of its own is a block of the caller's memory.
template <typename T>
inline constexpr ControlType wire_type = ControlType::None;
template <>
inline constexpr ControlType wire_type<bool> = ControlType::Bool;
template <>
inline constexpr ControlType wire_type<std::int16_t> = ControlType::Int16;
template <>
inline constexpr ControlType wire_type<std::int32_t> = ControlType::Int32;
template <>
inline constexpr ControlType wire_type<ControlText> = ControlType::Text;
template <>
inline constexpr ControlType wire_type<std::u16string> = ControlType::Text;
template <typename T>
inline constexpr ControlType wire_type<T*> = ControlType::UnknownRef;
template <>
inline constexpr ControlType wire_type<AutomationObject*> = ControlType::Unknown;
template <>
inline constexpr ControlType wire_type<std::int16_t*> = ControlType::Int16Ref;
template <>
inline constexpr ControlType wire_type<const std::int16_t*> = ControlType::Int16Ref;
template <>
inline constexpr ControlType wire_type<std::int32_t*> = ControlType::Int32Ref;
template <>
inline constexpr ControlType wire_type<char*> = ControlType::TextRef;
template <>
inline constexpr ControlType wire_type<char16_t*> = ControlType::TextRef;
template <std::size_t Bytes>
inline constexpr ControlType wire_type<std::array<char, Bytes>*> = ControlType::TextRef;

template <typename T>
using Carried = std::conditional_t<std::is_pointer_v<T>, void*, T>;

template <typename T>
ControlArgument Pack(T value)
{
    if constexpr (std::is_pointer_v<T>) {
        return {wire_type<T>, const_cast<void*>(static_cast<const void*>(value))};
    } else {
        return {wire_type<T>, value};
    }
}

template <typename T>
bool Carries(const ControlArgument& argument)
{
    return argument.type == wire_type<T> && std::holds_alternative<Carried<T>>(argument.value);
}

template <typename T>
T Unpack(const ControlArgument& argument)
{
    return static_cast<T>(std::get<Carried<T>>(argument.value));
}

// A control's true is -1, the callers' is 1.
template <typename T>
ControlResult GiveAnswer(T value)
{
    if constexpr (std::is_same_v<T, bool>) {
        return static_cast<std::int16_t>(value ? -1 : 0);
    } else {
        return value;
    }
}

// False, 0 or empty text for an answer of another type.
template <typename T>
T TakeAnswer(ControlResult&& answer)
{
    if constexpr (std::is_same_v<T, bool>) {
        return TakeAnswer<std::int16_t>(std::move(answer)) != 0;
    } else if constexpr (!std::is_void_v<T>) {
        T* value = std::get_if<T>(&answer);
        return value != nullptr ? std::move(*value) : T();
    }
}

// Ends the texts of a block that a control may have filled to the brim. Blocks of other types can have a function of
// this name beside their type.
template <typename T>
void EndTexts(T /*argument*/)
{
}
template <std::size_t Bytes>
void EndTexts(std::array<char, Bytes>* text)
{
    text->back() = '\0';
}

struct ControlCall {
    std::int32_t dispatch_id;
    InvokeKind kind;
    std::span<const ControlArgument> arguments;
    ControlType result;
};

template <std::int32_t Id, InvokeKind Kind, typename Signature>
struct Operation;

template <std::int32_t Id, InvokeKind Kind, typename Result, typename... Arguments>
struct Operation<Id, Kind, Result(Arguments...)> {
    static constexpr std::int32_t id = Id;
    static constexpr ControlType result = wire_type<Result>;
    static constexpr std::array<ControlType, sizeof...(Arguments)> arguments{wire_type<Arguments>...};
    static_assert((... && (wire_type<Arguments> != ControlType::None)), "an argument that cannot travel");
    static_assert(std::is_void_v<Result> || result != ControlType::None, "a result that cannot travel");

    // What the control answers; false, 0 or empty text from no control, a refusal or an answer of another type.
    static Result Invoke(IHostedControl* control, Arguments... given)
    {
        ControlResult answer;
        if (control != nullptr) {
            const std::array<ControlArgument, sizeof...(Arguments)> packed{Pack(given)...};
            answer = control->Invoke(Id, Kind, packed, result);
        }
        (EndTexts(given), ...);
        return TakeAnswer<Result>(std::move(answer));
    }

    // Whether `calls` takes the row with its arguments and gives its result, to the type.
    template <typename Row, typename Calls>
    static constexpr bool answered_by = requires
    {
        requires std::same_as<Result, std::invoke_result_t<const Calls&, Row, Arguments...>>;
    };

    // False for a call that is not this one, to the last type.
    template <typename Row, typename Calls>
    static bool Answer(const Calls& calls, const ControlCall& call, ControlResult& answer)
    {
        static_assert(answered_by<Row, Calls>, "an operation without its member");
        return AnswerAt<Row>(calls, call, answer, std::index_sequence_for<Arguments...>());
    }

private:
    template <typename Row, typename Calls, std::size_t... At>
    static bool AnswerAt(const Calls& calls, const ControlCall& call, ControlResult& answer, std::index_sequence<At...>)
    {
        if (call.dispatch_id != Id || call.kind != Kind || call.result != result ||
            call.arguments.size() != sizeof...(At) || !(... && Carries<Arguments>(call.arguments[At]))) {
            return false;
        }
        if constexpr (std::is_void_v<Result>) {
            calls(Row(), Unpack<Arguments>(call.arguments[At])...);
        } else {
            answer = GiveAnswer(calls(Row(), Unpack<Arguments>(call.arguments[At])...));
        }
        return true;
    }
};

// Answers each operation by the member of its name. Whoever takes or gives other types for some of them derives and
// adds an operator for their rows.
template <typename Target>
struct MemberCalls {
    Target& target;

    template <typename Row, typename... Given>
    auto operator()(Row, Given... given) const -> decltype(Row::Call(target, given...))
    {
        return Row::Call(target, given...);
    }
};

// monostate for a call that is not in the table, and for an operation without result.
template <typename Calls, typename... Rows>
ControlResult Dispatch(const std::tuple<Rows...>& /*contract*/, const Calls& calls, const ControlCall& call)
{
    ControlResult answer;
    static_cast<void>((... || Rows::template Answer<Rows>(calls, call, answer)));
    return answer;
}

} // namespace partkeep

// A contract is a list of ROW(id, kind, name, type), one an operation. These make of it the types of the rows, the
// elements of the table, and enumerators. Macros, since a row's name is a type, a text and a member's name at once.
#define PARTKEEP_ROW_TYPE(number, invoke_kind, operation, signature)                                                   \
    struct operation : Operation<number, InvokeKind::invoke_kind, signature> {                                         \
        static constexpr const char* name = #operation;                                                                \
        template <typename Target, typename... Given>                                                                  \
        static auto Call(Target& target, Given... given) -> decltype(target.operation(given...))                       \
        {                                                                                                              \
            return target.operation(given...);                                                                         \
        }                                                                                                              \
    };
#define PARTKEEP_ROW_ELEMENT(number, invoke_kind, operation, signature) operation{},
#define PARTKEEP_ROW_ID(number, invoke_kind, operation, signature) operation = (number),
