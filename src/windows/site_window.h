// The child window that a hosted control fills, or what stands in for one. The window owns its content and lets
// go of it when it is destroyed; whoever calls the content may hold it for longer.
#pragma once

#include "platform/control.h"
#include "resources/resource_ids.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace partkeep {

// The picture control's class id. A resource editor writes it as the window class of its place in a dialog
// template; a window class of that name makes such a template work without rewriting it.
inline constexpr wchar_t picture_control_class_name[] = L"" RES_PICTURE_CLASS;

class CSiteContent {
public:
    virtual ~CSiteContent() = default;

    virtual ControlResult Invoke(std::int32_t dispatch_id, InvokeKind kind, std::span<const ControlArgument> arguments,
                                 ControlType result) = 0;
    virtual void SetEventSink(std::function<void(std::int32_t)> sink) = 0;

    virtual void OnPaint(HDC, const RECT& /*client*/) {}
    virtual void OnSize(const RECT& /*client*/) {}
    virtual void OnFocus() {}
    virtual void OnDestroy() {}

    // True when the content has used the key up.
    virtual bool TranslateKey(MSG&) { return false; }
};

// Before the first dialog of a module and behind its last.
void RegisterSiteWindows(HINSTANCE module);
void UnregisterSiteWindows(HINSTANCE module);

// Null when the window cannot be made. The style is added to that of a child.
[[nodiscard]] HWND CreateSiteWindow(HINSTANCE module, HWND parent, int id, const RECT& area, DWORD style);
[[nodiscard]] bool IsMadeAtRunTime(HWND site); // by that; false for what is no site

void SetSiteContent(HWND site, std::shared_ptr<CSiteContent> content);
[[nodiscard]] CSiteContent* ContentOfSite(HWND site); // null for a window of another kind

// A frame that is never shown, as parent of a control that is not shown either.
[[nodiscard]] HWND CreateHiddenFrame(HINSTANCE module);

} // namespace partkeep
