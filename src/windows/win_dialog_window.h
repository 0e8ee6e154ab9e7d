// The one renderer of dialogs: a real dialog window from a template in a module's resources, driven by its
// logic through control ids. Modal ones run a loop of their own, so that the logic sees each key first.
#pragma once

#include "platform/dialog_window.h"
#include "windows/win_dialog_fields.h"
#include "windows/win_messages.h"
#include "windows/win_report_list.h"
#include "windows/win_toolbar.h"

#include <windows.h>

#include <memory>
#include <string>

namespace partkeep {

class CWinDialogWindow final : public IDialogWindow {
public:
    CWinDialogWindow(HINSTANCE module, const DialogTemplate& dialog) : module_(module), template_(dialog) {}
    ~CWinDialogWindow() override { Destroy(); }
    CWinDialogWindow(const CWinDialogWindow&) = delete;
    CWinDialogWindow& operator=(const CWinDialogWindow&) = delete;

    // The dialog that a window belongs to; null for a window of somebody else.
    [[nodiscard]] static CWinDialogWindow* Of(HWND window);

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

    [[nodiscard]] IDialogFields& Fields() override { return *fields_; }
    [[nodiscard]] IReportList& ReportList() override { return *list_; }
    [[nodiscard]] IToolbar& Toolbar() override { return toolbar_; }

    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHostedControl(const ClassId& class_id, int id,
                                                                      const Rect& area) override;
    [[nodiscard]] std::unique_ptr<IHostedControl> TemplateControl(int id) override;
    void CreateLabel(int id, const Rect& area) override;
    [[nodiscard]] std::unique_ptr<IPanelWindow> CreatePanel(int id, const Rect& area) override;

private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM word, LPARAM value) noexcept;

    bool Create(IDialogEvents& events, HWND owner);
    int RunLoop();
    void FollowMouseButton(const MSG& message, HWND focus);
    INT_PTR Handle(UINT message, WPARAM word, LPARAM value);
    INT_PTR HandleInit();
    void PlaceTemplateControls();
    void PutLabelsBeforeTheirFields();
    void PlaceBesideOwner();
    INT_PTR HandleCommand(WPARAM word);
    INT_PTR HandleNotify(const NMHDR& notice);
    INT_PTR HandleSetCursor();
    void HandleGone();

    HINSTANCE module_;
    const DialogTemplate& template_;
    HWND window_ = nullptr;
    HWND owner_ = nullptr;
    std::unique_ptr<IDialogFields> fields_ = MakeWinDialogFields(window_);
    std::unique_ptr<IReportList> list_ = MakeWinReportList(window_);
    CWinToolbar toolbar_{module_, window_};
    IDialogEvents* events_ = nullptr;
    CWinMessages owner_messages_{nullptr};
    bool modeless_ = false;
    bool placed_ = false; // beside its owner
    bool ended_ = false;
    int result_ = -1;
    HWND focus_before_tap_ = nullptr;
    int wait_depth_ = 0;
    HCURSOR cursor_before_wait_ = nullptr;
    std::wstring tip_text_; // lent to the tool tip that asked last
};

class CWinDialogs final : public IDialogWindows {
public:
    // The module that holds the templates, the toolbar's bitmap and the window classes of hosted controls.
    explicit CWinDialogs(HINSTANCE module) : module_(module) {}

    [[nodiscard]] std::unique_ptr<IDialogWindow> Make(const DialogTemplate& dialog) override;

private:
    HINSTANCE module_;
};

} // namespace partkeep
