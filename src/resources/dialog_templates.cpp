#include "resources/dialog_templates.h"

namespace partkeep {

namespace {

#define PUSH_BUTTON(id, x, y, width, height, caption) {id, ControlKind::PushButton, x, y, width, height, u"" caption},
#define DEFAULT_PUSH_BUTTON(id, x, y, width, height, caption)                                                          \
    {id, ControlKind::DefaultPushButton, x, y, width, height, u"" caption},
#define CHECK_BOX(id, x, y, width, height, caption) {id, ControlKind::CheckBox, x, y, width, height, u"" caption},
#define LABEL(id, x, y, width, height, caption) {id, ControlKind::Label, x, y, width, height, u"" caption},
#define EDIT(id, x, y, width, height) {id, ControlKind::Edit, x, y, width, height, u""},
#define READ_ONLY_EDIT(id, x, y, width, height) {id, ControlKind::ReadOnlyEdit, x, y, width, height, u""},
#define DROP_DOWN_LIST(id, x, y, width, height) {id, ControlKind::DropDownList, x, y, width, height, u""},
#define REPORT_LIST(id, x, y, width, height) {id, ControlKind::ReportList, x, y, width, height, u""},
#define HOSTED_CONTROL(id, x, y, width, height, class_id)                                                              \
    {id, ControlKind::HostedControl, x, y, width, height, u"" class_id},

constexpr TemplateControl selection_controls[] = {
#include "resources/selection_dialog.inc"
};

constexpr TemplateControl keypad_controls[] = {
#include "resources/quantity_keypad.inc"
};

constexpr TemplateControl selected_parts_controls[] = {
#include "resources/selected_parts_dialog.inc"
};

#define TOOL_BUTTON(command) command,
constexpr int filter_commands[] = {
#include "resources/filter_toolbar.inc"
};

constexpr std::uint8_t toolbar_bitmap[] = {
#include "toolbar_212_bytes.inc"
};

} // namespace

const DialogTemplate selection_dialog_template{RES_SELECTION_DIALOG, RES_SELECTION_SIZE, u"" RES_SELECTION_TITLE,
                                               u"" RES_FONT_NAME,    RES_FONT_POINTS,    selection_controls};

const DialogTemplate quantity_keypad_template{RES_QUANTITY_KEYPAD,
                                              RES_KEYPAD_SIZE,
                                              u"" RES_KEYPAD_TITLE,
                                              u"" RES_FONT_NAME,
                                              RES_FONT_POINTS,
                                              keypad_controls,
                                              true};

const DialogTemplate selected_parts_dialog_template{
    RES_SELECTED_PARTS_DIALOG, RES_SELECTED_PARTS_SIZE, u"" RES_SELECTED_PARTS_TITLE,
    u"" RES_FONT_NAME,         RES_FONT_POINTS,         selected_parts_controls};

const ToolbarTemplate filter_toolbar_template{RES_FILTER_TOOLBAR, RES_TOOL_SIZE, filter_commands, 64, 15,
                                              toolbar_bitmap};

} // namespace partkeep
