// Where a dialog's controls stand, and where a window stands that accompanies a dialog.

#include "platform/companion_place.h"
#include "resources/dialog_templates.h"
#include "windows/dialog_scale.h"
#include "windows/site_window.h"
#include "windows/win_dialog_fields.h"
#include "windows/win_dialog_window.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace partkeep {

namespace {

class CDialogUnits {
public:
    explicit CDialogUnits(HWND dialog) : scale_(dialog)
    {
        RECT base{0, 0, 4, 8};
        MapDialogRect(dialog, &base);
        width_ = std::max(scale_.ToLogical(static_cast<int>(base.right)), min_base_width);
        height_ = std::clamp(scale_.ToLogical(static_cast<int>(base.bottom)), min_base_height, max_base_height);
    }

    [[nodiscard]] int Across(int units) const { return MulDiv(units, scale_.ToDevice(4 * width_), 16); }
    [[nodiscard]] int Down(int units) const { return MulDiv(units, scale_.ToDevice(8 * height_), 64); }

private:
    CDialogScale scale_;
    int width_ = 0;
    int height_ = 0;
};

RECT FrameOf(HWND window)
{
    RECT frame{};
    GetWindowRect(window, &frame);
    return frame;
}

Rect AsArea(const RECT& area)
{
    return {static_cast<int>(area.left), static_cast<int>(area.top), static_cast<int>(area.right),
            static_cast<int>(area.bottom)};
}

// Its middle stays.
void ResizeClient(HWND dialog, int width, int height)
{
    const RECT frame = FrameOf(dialog);
    const RECT client = ClientOf(dialog);
    const int wider = width - static_cast<int>(client.right);
    const int higher = height - static_cast<int>(client.bottom);
    if (wider != 0 || higher != 0) {
        MoveWindow(dialog, frame.left - wider / 2, frame.top - higher / 2, frame.right - frame.left + wider,
                   frame.bottom - frame.top + higher, FALSE);
    }
}

// What the user works with while the other window is open: the hosted control that was put in, and the buttons.
std::vector<Rect> AreasToStayVisible(HWND dialog, int picture)
{
    std::vector<Rect> areas;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        const bool hosted = ContentOfSite(child) != nullptr && GetDlgCtrlID(child) != picture;
        if (IsWindowVisible(child) && (hosted || IsPushButton(child))) {
            areas.push_back(AsArea(FrameOf(child)));
        }
    }
    return areas;
}

// The nearest field to the right in the same row; null for a label that has none.
const TemplateControl* FieldBeside(const TemplateControl& label, std::span<const TemplateControl> controls)
{
    const TemplateControl* nearest = nullptr;
    for (const TemplateControl& field : controls) {
        const bool named_by_label = field.kind == ControlKind::Edit || field.kind == ControlKind::ReadOnlyEdit ||
                                    field.kind == ControlKind::DropDownList;
        if (named_by_label && field.x >= label.x + label.width && std::abs(field.y - label.y) < label.height / 2 &&
            (nearest == nullptr || field.x < nearest->x)) {
            nearest = &field;
        }
    }
    return nearest;
}

} // namespace

// The system leads a label's letter to the control behind the label, and reads the label out as that control's name.
// The template has the labels together; where they stand among the others is nothing to Tab.
void CWinDialogWindow::PutLabelsBeforeTheirFields()
{
    for (const auto& label : template_.controls) {
        const auto* field = label.kind == ControlKind::Label ? FieldBeside(label, template_.controls) : nullptr;
        if (field == nullptr) {
            continue;
        }
        HWND before = GetWindow(GetDlgItem(window_, field->id), GW_HWNDPREV);
        SetWindowPos(GetDlgItem(window_, label.id), before != nullptr ? before : HWND_TOP, 0, 0, 0, 0,
                     SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOREDRAW);
    }
}

// The system lays a dialog out by the size of the font alone, which grows by whole pixels: at each density the
// controls would stand elsewhere among those that are placed by pixels. They are placed anew, by the same units at all.
void CWinDialogWindow::PlaceTemplateControls()
{
    const CDialogUnits units(window_);
    ResizeClient(window_, units.Across(template_.width), units.Down(template_.height));
    for (const auto& control : template_.controls) {
        MoveWindow(GetDlgItem(window_, control.id), units.Across(control.x), units.Down(control.y),
                   units.Across(control.width), units.Down(control.height), FALSE);
    }
}

void CWinDialogWindow::PlaceBesideOwner()
{
    MONITORINFO screen{};
    screen.cbSize = sizeof screen;
    if (owner_ == nullptr || !GetMonitorInfoW(MonitorFromWindow(owner_, MONITOR_DEFAULTTONEAREST), &screen)) {
        return;
    }
    const Rect frame = AsArea(FrameOf(window_));
    const Rect place = CompanionPlace(AsArea(FrameOf(owner_)), AsArea(screen.rcWork), frame.Width(), frame.Height(),
                                      AreasToStayVisible(owner_, RES_PICTURE));
    SetWindowPos(window_, nullptr, place.left, place.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace partkeep
