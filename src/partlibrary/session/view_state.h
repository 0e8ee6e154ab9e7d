// What the browser's pane looks like, as the row of 16-bit values that the component keeps between runs and
// gives no meaning to. A row that another browser left behind begins otherwise and is ignored.
#pragma once

#include "partlibrary/library/part_list.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace partkeep {

inline constexpr std::size_t view_columns = 8; // the five of PartColumn, and room

struct ViewColumn {
    std::int16_t id = -1;   // PartColumn, or what a pane adds; -1: none
    std::int16_t width = 0; // logical pixels; 0: as the pane likes
    bool visible = false;

    friend bool operator==(const ViewColumn&, const ViewColumn&) = default;
};

enum class PictureSize : std::uint8_t { None, Small, Medium, Large };

struct ViewState {
    std::int16_t tree_width = 0; // logical pixels; 0: as the pane likes
    PartColumn sort = PartColumn::Name;
    bool descending = false;
    PictureSize pictures = PictureSize::None;
    std::array<ViewColumn, view_columns> columns{}; // from left to right

    friend bool operator==(const ViewState&, const ViewState&) = default;
};

// The values in their order: mark, version, tree width, sort column, descending, size of pictures, and then id, width
// and visibility of each column.
inline constexpr std::size_t view_state_values = 6 + 3 * view_columns;

void PackViewState(const ViewState& state, std::span<std::int16_t, view_state_values> values);

// False for values that this browser did not make; a value that makes no sense reads as its default.
bool UnpackViewState(std::span<const std::int16_t, view_state_values> values, ViewState& state);

} // namespace partkeep
