#include "settings/machine_filter.h"

#include <algorithm>

namespace partkeep {

namespace {

template <typename Predicate>
const MachineFilter* FindFilter(Predicate predicate)
{
    const auto* row = std::find_if(machine_filters.begin(), machine_filters.end(), predicate);
    return row != machine_filters.end() ? row : nullptr;
}

} // namespace

const MachineFilter* FindFilterByState(std::int16_t filter_state)
{
    return FindFilter([filter_state](const MachineFilter& row) { return row.FilterState == filter_state; });
}

const MachineFilter* FindFilterByCommand(int command)
{
    return FindFilter([command](const MachineFilter& row) { return row.command == command; });
}

} // namespace partkeep
