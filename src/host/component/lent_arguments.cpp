#include "host/component/lent_arguments.h"

#include <oleauto.h>

#include <bit>
#include <cstdint>

namespace partkeep {

namespace {

constexpr int max_reference_depth = 8; // a variant may refer to a variant, and a hostile one to itself
constexpr std::uint64_t untouched_double = 0x7FF8'5041'5254'4B50; // a NaN that nothing computes
constexpr LONG untouched_long = static_cast<LONG>(0x8000'0001);
OLECHAR untouched_text[1] = {}; // by its address: null and empty are texts that an operation may give

// The description of one function of a dispatch interface; released with it.
class CFunctionDescription {
public:
    CFunctionDescription(ITypeInfo& description, DISPID id) : description_(description)
    {
        for (UINT index = 0; SUCCEEDED(description_.GetFuncDesc(index, &function_)); ++index) {
            if (function_->memid == id) {
                return;
            }
            description_.ReleaseFuncDesc(function_);
            function_ = nullptr;
        }
        function_ = nullptr;
    }
    ~CFunctionDescription()
    {
        if (function_ != nullptr) {
            description_.ReleaseFuncDesc(function_);
        }
    }
    CFunctionDescription(const CFunctionDescription&) = delete;
    CFunctionDescription& operator=(const CFunctionDescription&) = delete;

    [[nodiscard]] const FUNCDESC* Get() const { return function_; }

private:
    ITypeInfo& description_;
    FUNCDESC* function_ = nullptr;
};

bool IsOutput(const ELEMDESC& parameter)
{
    return parameter.tdesc.vt == VT_PTR && (parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0;
}

// The innermost variant that a reference leads to; null where it leads nowhere.
VARIANT* ReferredVariant(VARIANT& argument)
{
    VARIANT* variant = &argument;
    for (int depth = 0; variant != nullptr && variant->vt == (VT_BYREF | VT_VARIANT); ++depth) {
        if (depth == max_reference_depth) {
            return nullptr;
        }
        variant = variant->pvarVal;
    }
    return variant;
}

bool IsUntouched(const VARIANT& value)
{
    switch (value.vt) {
    case VT_BSTR:
        return value.bstrVal == untouched_text;
    case VT_R8:
        return std::bit_cast<std::uint64_t>(value.dblVal) == untouched_double;
    default:
        return value.lVal == untouched_long;
    }
}

} // namespace

CLentArguments::~CLentArguments()
{
    for (Loan& loan : loans_) {
        if (!IsUntouched(loan.value)) {
            VariantClear(&loan.value);
        }
    }
}

HRESULT CLentArguments::Take(ITypeInfo& description, DISPID id, DISPPARAMS* arguments, UINT* bad_argument)
{
    if (arguments == nullptr || (arguments->cArgs > 0 && arguments->rgvarg == nullptr) ||
        arguments->cNamedArgs > arguments->cArgs ||
        (arguments->cNamedArgs > 0 && arguments->rgdispidNamedArgs == nullptr)) {
        return E_INVALIDARG;
    }
    parameters_ = *arguments;
    const CFunctionDescription function(description, id);
    if (function.Get() == nullptr) {
        return DISP_E_MEMBERNOTFOUND;
    }
    const auto count = static_cast<UINT>(function.Get()->cParams);
    if (arguments->cArgs != count) {
        return DISP_E_BADPARAMCOUNT;
    }
    arguments_.assign(arguments->rgvarg, arguments->rgvarg + count);
    parameters_.rgvarg = arguments_.data();
    // By position the last argument comes first; by name the name says which parameter it is.
    for (UINT position = 0; position < count; ++position) {
        const UINT parameter = position < arguments->cNamedArgs
                                   ? static_cast<UINT>(arguments->rgdispidNamedArgs[position])
                                   : count - 1 - position;
        const HRESULT status = parameter < count
                                   ? TakeArgument(arguments_[position], function.Get()->lprgelemdescParam[parameter])
                                   : DISP_E_PARAMNOTFOUND;
        if (FAILED(status)) {
            if (bad_argument != nullptr) {
                *bad_argument = position;
            }
            return status;
        }
    }
    return S_OK;
}

HRESULT CLentArguments::TakeArgument(VARIANT& argument, const ELEMDESC& parameter)
{
    const bool reference = (argument.vt & VT_BYREF) != 0;
    if (!reference) {
        return IsOutput(parameter) ? DISP_E_TYPEMISMATCH : S_OK;
    }
    VARIANT* variant = ReferredVariant(argument);
    if (variant == nullptr) {
        return DISP_E_TYPEMISMATCH;
    }
    if (!IsOutput(parameter)) {
        argument = *variant; // read through every reference; borrowed like the rest
        return (variant->vt & VT_BYREF) != 0 && variant->byref == nullptr ? DISP_E_TYPEMISMATCH : S_OK;
    }
    const VARTYPE type = parameter.tdesc.lptdesc->vt;
    if (variant == &argument || (variant->vt & VT_BYREF) != 0) {
        argument = *variant; // a typed place already; null is passed on and skipped
        return variant->vt == (VT_BYREF | type) ? S_OK : DISP_E_TYPEMISMATCH;
    }
    Lend(argument, variant, type);
    return S_OK;
}

void CLentArguments::Lend(VARIANT& argument, VARIANT* target, VARTYPE type)
{
    Loan& loan = loans_.emplace_back(Loan{target, type, {}});
    VariantInit(&loan.value);
    loan.value.vt = type;
    if (type == VT_R8) {
        loan.value.dblVal = std::bit_cast<double>(untouched_double);
    } else if (type == VT_I4) {
        loan.value.lVal = untouched_long;
    } else {
        loan.value.bstrVal = untouched_text;
    }
    argument.vt = static_cast<VARTYPE>(VT_BYREF | type);
    argument.byref = &loan.value.llVal;
}

void CLentArguments::GiveBack()
{
    for (Loan& loan : loans_) {
        if (!IsUntouched(loan.value)) {
            VariantClear(loan.target);
            *loan.target = loan.value;
            loan.value.vt = VT_EMPTY; // given away
        }
    }
}

} // namespace partkeep
