// The one renderer of dialogs: a real dialog window from a template in a module's resources, driven by its
// logic through control ids. Modal ones run a loop of their own, so that the logic sees each key first.
#pragma once

#include "platform/dialog_window.h"
#include "platform/windows/win_messages.h"

#include <windows.h>

namespace partkeep {

class WinDialogWindow final : public IDialogWindow {
public:
    WinDialogWindow(HINSTANCE module, const DialogTemplate& dialog) : module_(module), template_(dialog) {}
    ~WinDialogWindow() override { Destroy(); }
    WinDialogWindow(const WinDialogWindow&) = delete;
    WinDialogWindow& operator=(const WinDialogWindow&) = delete;

    // The dialog that a window belongs to; null for a window of somebody else.
    [[nodiscard]] static WinDialogWindow* Of(HWND window);

    // A message on its way to a window of this dialog. True: used up. The dialog may be gone afterwards.
    bool PreTranslate(MSG& message);

    int RunModal(IDialogEvents& events) override;
    bool CreateModeless(IDialogEvents& events, IDialogWindow* owner) override;
    void EndModal(int result) override;
    void Destroy() override;
    [[nodiscard]] bool Exists() const override { return window_ != nullptr; }

    void SetTitle(std::u16string_view title) override;
    [[nodiscard]] IconHandle ParentSmallIcon() const override;
    void SetSmallIcon(IconHandle icon) override;
    void Show(bool visible) override;
    void EnableOwner(bool enabled) override;
    void Invalidate() override;
    void UpdateNow() override;
    void BeginWait() override;
    void EndWait() override;
    [[nodiscard]] Rect ClientRect() const override;
    [[nodiscard]] IMessages& OwnerMessages() override { return owner_messages_; }

    void SetText(int id, std::u16string_view text) override;
    [[nodiscard]] std::u16string Text(int id) const override;
    void Enable(int id, bool enabled) override;
    void ShowControl(int id, bool visible) override;
    void SetReadOnly(int id) override;
    void LimitText(int id, int characters) override;
    void ClearSelectedText(int id) override;
    void SetCheck(int id, int state) override;
    [[nodiscard]] int Check(int id) const override;
    [[nodiscard]] Rect ControlClientRect(int id) const override;
    [[nodiscard]] Rect MapToDialog(int id, const Rect& client_area) const override;
    void MoveControl(int id, const Rect& area) override;

    void Focus(int id) override;
    [[nodiscard]] int FocusedControl() const override;
    void MoveFocusByOrder(bool forward) override;

    void ResetEntries(int id) override;
    void InsertEntry(int id, int index, std::u16string_view text) override;
    void SelectEntry(int id, int index) override;
    [[nodiscard]] int SelectedEntry(int id) const override;

    void InsertColumn(int id, int column, std::u16string_view header, int width) override;
    void SetFullRowSelect(int id) override;
    void InsertRow(int id, int row, std::u16string_view text) override;
    void SetCell(int id, int row, int column, std::u16string_view text) override;
    [[nodiscard]] std::u16string Cell(int id, int row, int column) const override;
    void DeleteRow(int id, int row) override;
    [[nodiscard]] int SelectedRowCount(int id) const override;
    [[nodiscard]] int NextSelectedRow(int id, int after) const override;

    bool CreateToolbar(const ToolbarTemplate& toolbar) override;
    [[nodiscard]] Rect ClientRectBesideToolbar() const override;
    void MoveAllControls(int dx, int dy) override;
    void PlaceToolbar() override;
    void EnableToolTips() override;
    void PressTool(int command, bool pressed) override;

    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHostedControl(const ClassId& class_id, int id,
                                                                      const Rect& area) override;
    [[nodiscard]] std::unique_ptr<IHostedControl> TemplateControl(int id) override;
    [[nodiscard]] std::unique_ptr<IPanelWindow> CreatePanel(int id, const Rect& area) override;

private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM word, LPARAM value) noexcept;

    bool Create(IDialogEvents& events, HWND owner);
    int RunLoop();
    INT_PTR Handle(UINT message, WPARAM word, LPARAM value);
    INT_PTR HandleInit();
    void PlaceTemplateControls();
    void PlaceBesideOwner();
    INT_PTR HandleCommand(WPARAM word);
    INT_PTR HandleNotify(const NMHDR& notice);
    INT_PTR HandleSetCursor();
    void HandleGone();
    bool TranslateInHostedControl(MSG& message);

    [[nodiscard]] HWND Control(int id) const { return GetDlgItem(window_, id); }
    [[nodiscard]] HWND FocusedChild() const; // the child of the dialog that has the focus or holds it
    LRESULT Send(int id, UINT message, WPARAM word = 0, LPARAM value = 0) const;
    int AddToolbarButtons(const ToolbarTemplate& toolbar);

    HINSTANCE module_;
    const DialogTemplate& template_;
    HWND window_ = nullptr;
    HWND owner_ = nullptr;
    HWND toolbar_ = nullptr;
    IDialogEvents* events_ = nullptr;
    WinMessages owner_messages_{nullptr};
    bool modeless_ = false;
    bool placed_ = false; // beside its owner
    bool ended_ = false;
    int result_ = -1;
    int disabled_with_focus_ = 0; // the control's id
    int wait_depth_ = 0;
    HCURSOR cursor_before_wait_ = nullptr;
    HBITMAP toolbar_bitmap_ = nullptr;
    std::wstring tip_text_; // lent to the tool tip that asked last
};

class WinDialogs final : public IDialogWindows {
public:
    // The module that holds the templates, the toolbar's bitmap and the window classes of hosted controls.
    explicit WinDialogs(HINSTANCE module) : module_(module) {}

    [[nodiscard]] std::unique_ptr<IDialogWindow> Make(const DialogTemplate& dialog) override;

private:
    HINSTANCE module_;
};

} // namespace partkeep
