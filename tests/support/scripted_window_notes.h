// How the scripted windows count pixels and write what they note; for their own two sources.
#pragma once

#include "tests/support/scripted_window.h"

namespace partkeep {

inline Rect InPixels(int x, int y, int width, int height)
{
    return {x * 6 / 4, y * 13 / 8, (x + width) * 6 / 4, (y + height) * 13 / 8};
}

inline Rect Moved(const Rect& area, int dx, int dy)
{
    return {area.left + dx, area.top + dy, area.right + dx, area.bottom + dy};
}

inline std::string Shown(const Rect& area)
{
    return std::to_string(area.left) + "," + std::to_string(area.top) + "," + std::to_string(area.right) + "," +
           std::to_string(area.bottom);
}

inline std::string Shown(bool on)
{
    return on ? "on" : "off";
}

inline std::string Shown(int number)
{
    return std::to_string(number);
}

inline std::string Shown(std::u16string_view text)
{
    return Quoted(text);
}

inline bool IsEdit(ControlKind kind)
{
    return kind == ControlKind::Edit || kind == ControlKind::ReadOnlyEdit;
}

inline bool IsButton(ControlKind kind)
{
    return kind == ControlKind::PushButton || kind == ControlKind::DefaultPushButton;
}

// Notes a call on a control and gives its model; a control that does not exist has one that nobody looks at.
template <typename... Arguments>
ControlModel& CScriptedWindow::NoteOn(int id, std::string what, const Arguments&... arguments)
{
    what += " " + std::to_string(id);
    ((what += " " + Shown(arguments)), ...);
    Note(what);
    const auto control = controls.find(id);
    return control == controls.end() ? missing_ = {} : control->second;
}

} // namespace partkeep
