#include "partlibrary/session/view_state.h"

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::int16_t mark = 0x4B50;
constexpr std::int16_t version = 1;
constexpr std::int16_t max_width = 10000;

std::int16_t ReadWidth(std::int16_t value)
{
    return std::clamp<std::int16_t>(value, 0, max_width);
}

} // namespace

void PackViewState(const ViewState& state, std::span<std::int16_t, view_state_values> values)
{
    auto* next = values.begin().base();
    const auto put = [&next](int value) { *next++ = static_cast<std::int16_t>(value); };
    put(mark);
    put(version);
    put(state.tree_width);
    put(static_cast<int>(state.sort));
    put(state.descending ? 1 : 0);
    put(static_cast<int>(state.pictures));
    for (const ViewColumn& column : state.columns) {
        put(column.id);
        put(column.width);
        put(column.visible ? 1 : 0);
    }
}

bool UnpackViewState(std::span<const std::int16_t, view_state_values> values, ViewState& state)
{
    if (values[0] != mark || values[1] != version) {
        return false;
    }
    state = {};
    state.tree_width = ReadWidth(values[2]);
    if (values[3] >= 0 && values[3] <= static_cast<std::int16_t>(PartColumn::Comment)) {
        state.sort = static_cast<PartColumn>(values[3]);
    }
    state.descending = values[4] != 0;
    state.pictures =
        static_cast<PictureSize>(std::clamp<std::int16_t>(values[5], 0, static_cast<std::int16_t>(PictureSize::Large)));
    for (std::size_t i = 0; i < view_columns; ++i) {
        const auto column = values.subspan(6 + 3 * i, 3);
        state.columns[i] = {std::max<std::int16_t>(column[0], -1), ReadWidth(column[1]), column[2] != 0};
    }
    return true;
}

} // namespace partkeep
