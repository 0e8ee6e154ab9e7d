// What makes the outputs readable for script hosts. A script passes its variables as references to variants; the
// type information answers a type mismatch for such an argument where it wants a typed place. So each of them is
// lent a typed variable for the call, and the value goes back into the script's variable behind it.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <deque>
#include <vector>

namespace partkeep {

class CLentArguments {
public:
    CLentArguments() = default;
    ~CLentArguments();
    CLentArguments(const CLentArguments&) = delete;
    CLentArguments& operator=(const CLentArguments&) = delete;

    // Failure for arguments that cannot be read: null where there must be something. Where one argument is to blame,
    // `bad_argument`, which may be null, gets its place in the caller's array.
    HRESULT Take(ITypeInfo& description, DISPID id, DISPPARAMS* arguments, UINT* bad_argument);

    // The arguments for the call: references to typed variables only, everything else as it was.
    [[nodiscard]] DISPPARAMS* Parameters() { return &parameters_; }

    // After the call. A variable that the operation left untouched leaves the script's untouched too.
    void GiveBack();

private:
    struct Loan {
        VARIANT* target; // the script's
        VARTYPE type;
        VARIANT value; // the typed variable lives in here
    };

    HRESULT TakeArgument(VARIANT& argument, const ELEMDESC& parameter);
    void Lend(VARIANT& argument, VARIANT* target, VARTYPE type);

    DISPPARAMS parameters_{};
    std::vector<VARIANT> arguments_;
    std::deque<Loan> loans_; // addresses stay
};

} // namespace partkeep
