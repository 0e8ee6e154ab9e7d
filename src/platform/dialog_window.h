// A dialog window made from a template and addressed by control id: one interface for all dialogs, so that each
// front end is one generic renderer. It hands every event to an IDialogEvents, which stands before the dialog's
// logic. Everything happens on the thread that runs the dialog.
#pragma once

#include "platform/control.h"
#include "platform/geometry.h"
#include "platform/messages.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace partkeep {

struct DialogTemplate;  // resources/dialog_templates.h
struct ToolbarTemplate; // resources/dialog_templates.h
class IDeviceContext;   // platform/graphics.h

using IconHandle = void*; // null: none; owned by the window it came from

inline constexpr int id_ok = 1;
inline constexpr int id_cancel = 2;

inline constexpr int key_tab = 9;
inline constexpr int key_return = 13;
inline constexpr int key_escape = 27;
inline constexpr int key_delete = 46;
inline constexpr int key_a = 65;
inline constexpr int key_z = 90;
inline constexpr int key_f2 = 113;

// A key going down, by virtual key code, with the modifiers as they are at that moment.
struct KeyPress {
    int key = 0;
    bool control = false;
    bool shift = false;
};

// Where a front end hands in every event of a window, at whatever moment it comes: what becomes of it is decided
// behind this. Nothing is thrown. The window may be gone when an operation returns.
class IDialogEvents {
public:
    virtual ~IDialogEvents() = default;

    // The window and its controls exist and are not shown yet.
    virtual void OnInitDialog() noexcept = 0;

    // Each key on its way to any control of this window, hosted controls included, before the control sees it.
    // True: the key is used up. False: the dialog's default handling.
    virtual bool PreTranslateMessage(const KeyPress& press) noexcept = 0;

    // A button, check box or tool by its id. Enter and Escape arrive as id_ok and id_cancel where they press
    // no other button, the close box as id_cancel.
    virtual void OnCommand(int id) noexcept = 0;

    virtual void OnSelectionChange(int id) noexcept = 0; // drop-down list, by the user
    virtual void OnTextChange(int id) noexcept = 0;      // edit, by the user or by program
    virtual void OnPaint() noexcept = 0;                 // each repaint of the dialog itself, when it is done
    virtual void OnDestroy() noexcept = 0;               // while the controls still exist

    [[nodiscard]] virtual std::u16string ToolTipText(int command) noexcept = 0;
};

using PanelPainter = std::function<void(IDeviceContext&)>;

// A child window that the dialog's logic paints.
class IPanelWindow {
public:
    virtual ~IPanelWindow() = default;

    virtual void SetPainter(PanelPainter painter) = 0;                  // one that throws nothing
    [[nodiscard]] virtual Rect ClientRect() const = 0;                  // left and top 0
    [[nodiscard]] virtual Rect MapToDialog(const Rect& area) const = 0; // from client to dialog coordinates
    virtual void Move(const Rect& area) = 0;                            // client area, in dialog coordinates
    virtual void Show(bool visible) = 0;
    virtual void Invalidate(bool erase) = 0;
};

// The controls of a dialog by id. One that does not exist ignores what is set and answers empty, false or 0.
class IDialogFields {
public:
    virtual ~IDialogFields() = default;

    virtual void SetText(int id, std::u16string_view text) = 0;
    [[nodiscard]] virtual std::u16string Text(int id) const = 0;
    virtual void Enable(int id, bool enabled) = 0;
    virtual void ShowControl(int id, bool visible) = 0;
    virtual void SetReadOnly(int id) = 0;
    virtual void LimitText(int id, int characters) = 0; // typed text only; program text passes
    virtual void ClearSelectedText(int id) = 0;         // WM_CLEAR
    virtual void SetCheck(int id, int state) = 0;
    [[nodiscard]] virtual int Check(int id) const = 0;
    [[nodiscard]] virtual Rect ControlClientRect(int id) const = 0;                    // left and top 0
    [[nodiscard]] virtual Rect MapToDialog(int id, const Rect& client_area) const = 0; // to dialog coordinates
    virtual void MoveControl(int id, const Rect& area) = 0;                            // dialog coordinates, repaints

    // Keyboard focus.
    virtual void Focus(int id) = 0;
    [[nodiscard]] virtual int FocusedControl() const = 0; // 0: none; the hosting id for a window inside one
    virtual void MoveFocusByOrder(bool forward) = 0;      // the dialog's own tab order

    // Drop-down list.
    virtual void ResetEntries(int id) = 0;
    virtual void InsertEntry(int id, int index, std::u16string_view text) = 0;
    virtual void SelectEntry(int id, int index) = 0;
    [[nodiscard]] virtual int SelectedEntry(int id) const = 0; // -1: none
};

// Report lists by id, which answer like fields where there is none.
class IReportList {
public:
    virtual ~IReportList() = default;

    virtual void InsertColumn(int id, int column, std::u16string_view header, int width) = 0; // left-aligned
    virtual void SetFullRowSelect(int id) = 0;
    virtual void InsertRow(int id, int row, std::u16string_view text) = 0;
    virtual void SetCell(int id, int row, int column, std::u16string_view text) = 0;
    [[nodiscard]] virtual std::u16string Cell(int id, int row, int column) const = 0;
    virtual void DeleteRow(int id, int row) = 0;
    [[nodiscard]] virtual int SelectedRowCount(int id) const = 0;
    [[nodiscard]] virtual int NextSelectedRow(int id, int after) const = 0; // after -1: the first; -1: none
    virtual void SelectAllRows(int id) = 0;
    // The row from which keys go on, brought into view; selects nothing.
    virtual void FocusRow(int id, int row) = 0;
};

// The tool bar, at the top of the client area.
class IToolbar {
public:
    virtual ~IToolbar() = default;

    virtual bool CreateToolbar(const ToolbarTemplate& toolbar) = 0;
    [[nodiscard]] virtual Rect ClientRectBesideToolbar() const = 0; // what the bar leaves of the client area
    virtual void MoveAllControls(int dx, int dy) = 0;               // without repainting; panels move along
    virtual void PlaceToolbar() = 0;
    virtual void EnableToolTips() = 0; // of the bar and of the dialog
    virtual void PressTool(int command, bool pressed) = 0;
};

// The window itself, its run, and what is in it.
class IDialogWindow {
public:
    virtual ~IDialogWindow() = default;

    // Life. Both create the window and call OnInitDialog before they show it.
    // Runs until EndModal and gives its result; -1 when no window can be made. The owner is the window that is
    // active on this thread, disabled meanwhile. Input that waits when the run ends was meant for this window and
    // is thrown away with it.
    virtual int RunModal(IDialogEvents& events) = 0;
    // Creates a window that is not shown yet; it floats over `owner`. False when none can be made.
    virtual bool CreateModeless(IDialogEvents& events, IDialogWindow* owner) = 0;
    // The loop ends when the current event has been handled. The window takes no input from now on.
    virtual void EndModal(int result) = 0;
    virtual void Destroy() = 0; // calls OnDestroy; does nothing without a window
    [[nodiscard]] virtual bool Exists() const = 0;

    // The window as a whole.
    virtual void SetTitle(std::u16string_view title) = 0;
    [[nodiscard]] virtual IconHandle ParentSmallIcon() const = 0; // null without a parent
    virtual void SetSmallIcon(IconHandle icon) = 0;
    virtual void Show(bool visible) = 0;
    virtual void EnableOwner(bool enabled) = 0;
    virtual void Invalidate() = 0; // with its panels, without erasing
    virtual void UpdateNow() = 0;  // paints at once what is invalid
    virtual void BeginWait() = 0;  // wait cursor; calls nest
    virtual void EndWait() = 0;
    [[nodiscard]] virtual Rect ClientRect() const = 0;
    [[nodiscard]] virtual IMessages& OwnerMessages() = 0; // messages owned by this window's owner

    // What is in it; good for as long as this is, and without effect while no window exists.
    [[nodiscard]] virtual IDialogFields& Fields() = 0;
    [[nodiscard]] virtual IReportList& ReportList() = 0;
    [[nodiscard]] virtual IToolbar& Toolbar() = 0;

    // Children made at run time. The results live no longer than the window.
    // Null when the control cannot be created. Afterwards the control answers to its id as any other.
    [[nodiscard]] virtual std::unique_ptr<IHostedControl> CreateHostedControl(const ClassId& class_id, int id,
                                                                              const Rect& area) = 0;
    // The hosted control that stands in the template; null where there is none.
    [[nodiscard]] virtual std::unique_ptr<IHostedControl> TemplateControl(int id) = 0;
    // A text, empty and visible.
    virtual void CreateLabel(int id, const Rect& area) = 0;
    // Visible, sunken.
    [[nodiscard]] virtual std::unique_ptr<IPanelWindow> CreatePanel(int id, const Rect& area) = 0;
};

class IDialogWindows {
public:
    virtual ~IDialogWindows() = default;

    // `dialog` must outlive the result.
    [[nodiscard]] virtual std::unique_ptr<IDialogWindow> Make(const DialogTemplate& dialog) = 0;
};

} // namespace partkeep
