// The part browser's contract as values, for tests that go over all its operations.
#pragma once

#include "controls/part_browser_contract.h"

#include <algorithm>

namespace partkeep {

struct OperationSignature {
    BrowserOperation operation;
    const char* name;
    ControlType result;
    std::span<const ControlType> arguments;
};

inline constexpr auto browser_signatures = std::apply(
    [](auto... row) {
        return std::array{OperationSignature{BrowserOperation{row.id}, row.name, row.result, row.arguments}...};
    },
    browser::contract);

// Null for an id that is not in the contract.
inline const OperationSignature* FindBrowserSignature(std::int32_t dispatch_id)
{
    const auto* found =
        std::ranges::find(browser_signatures, BrowserOperation{dispatch_id}, &OperationSignature::operation);
    return found != browser_signatures.end() ? found : nullptr;
}

} // namespace partkeep
