// The dialog templates and the toolbar as data, from the same sources that the resource compiler reads.
// Positions are in dialog units: a quarter of the average character width, an eighth of its height.
#pragma once

#include "resources/resource_ids.h"

#include <cstdint>
#include <span>

namespace partkeep {

// The browser and the pictures stand at distances told in pixels among controls placed in dialog units. Within these
// bounds of the base units, in pixels of 96 dpi, they keep clear of each other; fonts with much line spacing leave
// them.
inline constexpr int min_base_width = 6;
inline constexpr int min_base_height = 13;
inline constexpr int max_base_height = 14;

enum class ControlKind {
    PushButton,
    DefaultPushButton,
    CheckBox, // automatic
    Label,
    Edit,
    ReadOnlyEdit,
    DropDownList,  // its height is that of the open list
    ReportList,    // several rows selectable, selection visible without focus, never sorted
    HostedControl, // its caption is its class id in braces
};

struct TemplateControl {
    int id;
    ControlKind kind;
    int x;
    int y;
    int width;
    int height;
    const char16_t* caption;
};

struct DialogTemplate {
    int number;
    int width;
    int height;
    const char16_t* title;
    const char16_t* font;
    int font_points;
    std::span<const TemplateControl> controls; // in tab order
    bool for_fingers = false;                  // worked by touch: a front end may enlarge it as a whole
};

struct ToolbarTemplate {
    int number;
    int button_width;
    int button_height;
    std::span<const int> commands;
    int bitmap_width;
    int bitmap_height;
    std::span<const std::uint8_t> bitmap; // a complete BMP file, one strip
};

extern const DialogTemplate selection_dialog_template;      // 101
extern const DialogTemplate quantity_keypad_template;       // 202
extern const DialogTemplate selected_parts_dialog_template; // 250
extern const ToolbarTemplate filter_toolbar_template;       // 212

} // namespace partkeep
