// Numbers and pixels of the selection dialog that its logic speaks of.
#pragma once

namespace partkeep {

inline constexpr int load_button = 201;
inline constexpr int unit_box = 202;
inline constexpr int part_name_box = 203;
inline constexpr int comment_box = 204;
inline constexpr int unit_label = 206;
inline constexpr int comment_label = 207;
inline constexpr int part_name_label = 208;
inline constexpr int add_button = 210;
inline constexpr int picture_control = 211;
inline constexpr int image2D_label = 212;
inline constexpr int image3D_label = 213;
inline constexpr int browser_control = 215;
inline constexpr int quantity_check = 217;
inline constexpr int image_panel = 65535;

inline constexpr int pane_extent = 149; // width and height of a pane's client area

inline constexpr int max_selected_parts = 256; // selected in the browser, in one Add or Load

} // namespace partkeep
