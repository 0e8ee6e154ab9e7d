#include "desktop/qt_keys.h"

#include <QKeyEvent>

#include <algorithm>

namespace partkeep {

namespace {

struct KeyRow {
    int qt_key;
    int virtual_key;
};

constexpr KeyRow named_keys[] = {
    {Qt::Key_Return, key_return},
    {Qt::Key_Enter, key_return},
    {Qt::Key_Tab, key_tab},
    {Qt::Key_Backtab, key_tab},
    {Qt::Key_Escape, key_escape},
    {Qt::Key_Backspace, 8},
    {Qt::Key_Space, 32},
    {Qt::Key_PageUp, 33},
    {Qt::Key_PageDown, 34},
    {Qt::Key_End, 35},
    {Qt::Key_Home, 36},
    {Qt::Key_Left, 37},
    {Qt::Key_Up, 38},
    {Qt::Key_Right, 39},
    {Qt::Key_Down, 40},
    {Qt::Key_Insert, 45},
    {Qt::Key_Delete, key_delete},
    {Qt::Key_F2, key_f2},
};

int VirtualKey(int key)
{
    const bool letter = key >= Qt::Key_A && key <= Qt::Key_Z;
    const bool digit = key >= Qt::Key_0 && key <= Qt::Key_9;
    if (letter || digit) {
        return key; // the same numbers in both worlds
    }
    const auto* const row = std::ranges::find(named_keys, key, &KeyRow::qt_key);
    return row == std::end(named_keys) ? 0 : row->virtual_key;
}

} // namespace

KeyPress ToKeyPress(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    if (modifiers.testFlag(Qt::AltModifier)) {
        return {};
    }
    const bool shift = modifiers.testFlag(Qt::ShiftModifier) || event.key() == Qt::Key_Backtab;
    return {VirtualKey(event.key()), modifiers.testFlag(Qt::ControlModifier), shift};
}

bool IsDialogKey(const QKeyEvent& event)
{
    const int key = VirtualKey(event.key());
    return key == key_return || key == key_escape || key == key_tab ||
           (key == key_a && event.modifiers().testFlag(Qt::ControlModifier));
}

} // namespace partkeep
