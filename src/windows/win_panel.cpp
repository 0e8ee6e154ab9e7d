#include "windows/win_panel.h"

#include "windows/dialog_scale.h"
#include "windows/gdi_device_context.h"
#include "windows/live_counts.h"

namespace partkeep {

namespace {

class CWinPanel;

constexpr wchar_t panel_property[] = L"PartkeepPanel";

class CWinPanel final : public IPanelWindow {
public:
    CWinPanel(HINSTANCE module, HWND dialog, int id, const RECT& area)
        : dialog_(dialog), window_(CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE | SS_SUNKEN, area.left,
                                                   area.top, area.right - area.left, area.bottom - area.top, dialog,
                                                   reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), module, nullptr))
    {
        if (window_ == nullptr) {
            return;
        }
        ++TheLiveCounts().windows;
        SetPropW(window_, panel_property, this);
        plain_ =
            reinterpret_cast<WNDPROC>(SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure)));
    }
    ~CWinPanel() override
    {
        if (window_ != nullptr) {
            DestroyWindow(window_);
        }
    }
    CWinPanel(const CWinPanel&) = delete;
    CWinPanel& operator=(const CWinPanel&) = delete;

    [[nodiscard]] bool Exists() const { return window_ != nullptr; }

    void SetPainter(std::function<void(IDeviceContext&)> painter) override { painter_ = std::move(painter); }
    [[nodiscard]] Rect ClientRect() const override { return LogicalClientOf(window_); }
    [[nodiscard]] Rect MapToDialog(const Rect& area) const override
    {
        return Exists() ? MapArea(window_, dialog_, area) : Rect{};
    }
    void Move(const Rect& area) override { MoveClientArea(window_, area, true); }
    void Show(bool visible) override { ShowWindow(window_, visible ? SW_SHOW : SW_HIDE); }
    void Invalidate(bool erase) override
    {
        if (Exists()) { // without a window it would be every window on the screen
            InvalidateRect(window_, nullptr, erase ? TRUE : FALSE);
        }
    }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM word, LPARAM value) noexcept;
    void Paint() const;
    void PaintOn(HDC context) const;
    void PaintScaled(HDC context, const RECT& client) const;

    HWND dialog_;
    HWND window_;
    WNDPROC plain_ = nullptr;
    std::function<void(IDeviceContext&)> painter_;
};

LRESULT CWinPanel::Procedure(HWND window, UINT message, WPARAM word, LPARAM value) noexcept
{
    auto* panel = static_cast<CWinPanel*>(GetPropW(window, panel_property));
    if (panel == nullptr) {
        return DefWindowProcW(window, message, word, value);
    }
    if (message == WM_PAINT) {
        panel->Paint();
        return 0;
    }
    WNDPROC plain = panel->plain_;
    if (message == WM_NCDESTROY) {
        panel->window_ = nullptr;
        RemovePropW(window, panel_property);
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(plain));
        --TheLiveCounts().windows;
    }
    return CallWindowProcW(plain, window, message, word, value);
}

void CWinPanel::Paint() const
{
    PAINTSTRUCT paint;
    HDC context = BeginPaint(window_, &paint);
    const RECT client = ClientOf(window_);
    if (CDialogScale(window_).IsPlain()) {
        PaintOn(context);
    } else {
        PaintScaled(context, client);
    }
    EndPaint(window_, &paint);
}

void CWinPanel::PaintOn(HDC context) const
{
    if (painter_) {
        CGdiDeviceContext device(context);
        painter_(device);
    }
}

// The logic paints in its own pixels, and the picture is enlarged to those of the screen.
void CWinPanel::PaintScaled(HDC context, const RECT& client) const
{
    const Rect logical = CDialogScale(window_).ToLogical(client);
    HDC memory = CreateCompatibleDC(context);
    HBITMAP bitmap = CreateCompatibleBitmap(context, logical.right, logical.bottom);
    HGDIOBJ previous = SelectObject(memory, bitmap);
    PaintOn(memory);
    SetStretchBltMode(context, HALFTONE);
    SetBrushOrgEx(context, 0, 0, nullptr);
    StretchBlt(context, 0, 0, client.right, client.bottom, memory, 0, 0, logical.right, logical.bottom, SRCCOPY);
    SelectObject(memory, previous);
    DeleteObject(bitmap);
    DeleteDC(memory);
}

BOOL CALLBACK InvalidateIfPanel(HWND child, LPARAM)
{
    if (GetPropW(child, panel_property) != nullptr) {
        InvalidateRect(child, nullptr, FALSE);
    }
    return TRUE;
}

} // namespace

std::unique_ptr<IPanelWindow> MakePanel(HINSTANCE module, HWND dialog, int id, const RECT& area)
{
    auto panel = std::make_unique<CWinPanel>(module, dialog, id, area);
    if (!panel->Exists()) {
        return nullptr;
    }
    return panel;
}

void InvalidatePanels(HWND dialog)
{
    EnumChildWindows(dialog, InvalidateIfPanel, 0);
}

} // namespace partkeep
