#include "windows/dispatch_call.h"

#include "platform/windows/wide.h"

#include <oleauto.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace partkeep {

namespace {

// The arguments of one call as the automation interface wants them: last one first.
class CCallArguments {
public:
    explicit CCallArguments(std::span<const ControlArgument> arguments)
    {
        variants_.reserve(arguments.size());
        std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(variants_), VariantOf);
    }
    // Only texts belong to this call; everything else is borrowed.
    ~CCallArguments()
    {
        for (VARIANT& variant : variants_) {
            if (variant.vt == VT_BSTR) {
                SysFreeString(variant.bstrVal);
            }
        }
    }
    CCallArguments(const CCallArguments&) = delete;
    CCallArguments& operator=(const CCallArguments&) = delete;

    [[nodiscard]] VARIANT* Data() { return variants_.data(); }
    [[nodiscard]] UINT Count() const { return static_cast<UINT>(variants_.size()); }

private:
    static VARIANT VariantOf(const ControlArgument& argument)
    {
        VARIANT variant;
        VariantInit(&variant);
        variant.vt = static_cast<VARTYPE>(argument.type);
        if (const auto* text = std::get_if<std::u16string_view>(&argument.value)) {
            variant.bstrVal = SysAllocStringLen(AsWide(text->data()), static_cast<UINT>(text->size()));
        } else if (const auto* small = std::get_if<std::int16_t>(&argument.value)) {
            variant.iVal = *small;
        } else if (const auto* number = std::get_if<std::int32_t>(&argument.value)) {
            variant.lVal = *number;
        } else if (const auto* pointer = std::get_if<void*>(&argument.value)) {
            variant.byref = *pointer;
        }
        return variant;
    }

    std::vector<VARIANT> variants_;
};

ControlResult ResultOf(VARIANT& answer, ControlType type)
{
    if (answer.vt != static_cast<VARTYPE>(type) &&
        FAILED(VariantChangeType(&answer, &answer, 0, static_cast<VARTYPE>(type)))) {
        return {};
    }
    switch (type) {
    case ControlType::Bool:
        return static_cast<std::int16_t>(answer.boolVal);
    case ControlType::Int16:
        return static_cast<std::int16_t>(answer.iVal);
    case ControlType::Int32:
        return static_cast<std::int32_t>(answer.lVal);
    case ControlType::Text:
        return FromWide({answer.bstrVal != nullptr ? answer.bstrVal : L"", SysStringLen(answer.bstrVal)});
    default:
        return {};
    }
}

void FreeTexts(EXCEPINFO& trouble)
{
    SysFreeString(trouble.bstrSource);
    SysFreeString(trouble.bstrDescription);
    SysFreeString(trouble.bstrHelpFile);
}

WORD FlagsOf(InvokeKind kind)
{
    switch (kind) {
    case InvokeKind::PropertyGet:
        return DISPATCH_PROPERTYGET;
    case InvokeKind::PropertyPut:
        return DISPATCH_PROPERTYPUT;
    default:
        return DISPATCH_METHOD;
    }
}

} // namespace

static_assert(static_cast<VARTYPE>(ControlType::Text) == VT_BSTR);
static_assert(static_cast<VARTYPE>(ControlType::UnknownRef) == (VT_BYREF | VT_UNKNOWN));

ControlResult CallDispatch(IDispatch& object, std::int32_t dispatch_id, InvokeKind kind,
                           std::span<const ControlArgument> arguments, ControlType result)
{
    CCallArguments call(arguments);
    DISPID put_name = DISPID_PROPERTYPUT;
    const bool put = kind == InvokeKind::PropertyPut;
    DISPPARAMS parameters{call.Data(), put ? &put_name : nullptr, call.Count(), put ? 1U : 0U};
    VARIANT answer;
    VariantInit(&answer);
    EXCEPINFO trouble{};
    const HRESULT status = object.Invoke(dispatch_id, IID_NULL, 0, FlagsOf(kind), &parameters,
                                         result != ControlType::None ? &answer : nullptr, &trouble, nullptr);
    FreeTexts(trouble);
    ControlResult taken;
    if (SUCCEEDED(status) && result != ControlType::None) {
        taken = ResultOf(answer, result);
    }
    VariantClear(&answer);
    return taken;
}

} // namespace partkeep
