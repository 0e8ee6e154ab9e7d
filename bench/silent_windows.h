// Dialog windows that show nothing and cost next to nothing. A modal run consists of one press of a button.
#pragma once

#include "platform/dialog_window.h"

#include <functional>

namespace partkeep {

class CSilentPanel : public IPanelWindow {
public:
    void SetPainter(std::function<void(IDeviceContext&)>) override {}
    [[nodiscard]] Rect ClientRect() const override { return {}; }
    [[nodiscard]] Rect MapToDialog(const Rect& area) const override { return area; }
    void Move(const Rect&) override {}
    void Show(bool) override {}
    void Invalidate(bool) override {}
};

class CSilentMessages : public IMessages {
public:
    void Show(const Message&) override { ++shown; }

    int shown = 0;
};

class CSilentWindow : public IDialogWindow, public IDialogFields, public IReportList, public IToolbar {
public:
    // `press` is called once the dialog stands.
    CSilentWindow(CSilentMessages& messages, std::function<std::unique_ptr<IHostedControl>()> make_control,
                  std::function<void(IDialogEvents&)> press)
        : messages_(messages), make_control_(std::move(make_control)), press_(std::move(press))
    {
    }

    int RunModal(IDialogEvents& events) override
    {
        events.OnInitDialog();
        press_(events);
        events.OnDestroy();
        return result_;
    }
    bool CreateModeless(IDialogEvents&, IDialogWindow*) override { return false; }
    void EndModal(int result) override { result_ = result; }
    void Destroy() override {}
    [[nodiscard]] bool Exists() const override { return true; }
    [[nodiscard]] IDialogFields& Fields() override { return *this; }
    [[nodiscard]] IReportList& ReportList() override { return *this; }
    [[nodiscard]] IToolbar& Toolbar() override { return *this; }
    void SetTitle(std::u16string_view) override {}
    [[nodiscard]] IconHandle ParentSmallIcon() const override { return nullptr; }
    void SetSmallIcon(IconHandle) override {}
    void Show(bool) override {}
    void EnableOwner(bool) override {}
    void Invalidate() override {}
    void UpdateNow() override {}
    void BeginWait() override {}
    void EndWait() override {}
    [[nodiscard]] Rect ClientRect() const override { return {}; }
    [[nodiscard]] IMessages& OwnerMessages() override { return messages_; }
    void SetText(int, std::u16string_view) override {}
    [[nodiscard]] std::u16string Text(int) const override { return {}; }
    void Enable(int, bool) override {}
    void ShowControl(int, bool) override {}
    void SetReadOnly(int) override {}
    void LimitText(int, int) override {}
    void ClearSelectedText(int) override {}
    void SetCheck(int, int) override {}
    [[nodiscard]] int Check(int) const override { return 0; }
    [[nodiscard]] Rect ControlClientRect(int) const override { return {}; }
    [[nodiscard]] Rect MapToDialog(int, const Rect& area) const override { return area; }
    void MoveControl(int, const Rect&) override {}
    void Focus(int) override {}
    [[nodiscard]] int FocusedControl() const override { return 0; }
    void MoveFocusByOrder(bool) override {}
    void ResetEntries(int) override {}
    void InsertEntry(int, int, std::u16string_view) override {}
    void SelectEntry(int, int) override {}
    [[nodiscard]] int SelectedEntry(int) const override { return 0; }
    void InsertColumn(int, int, std::u16string_view, int) override {}
    void SetFullRowSelect(int) override {}
    void InsertRow(int, int, std::u16string_view) override {}
    void SetCell(int, int, int, std::u16string_view) override {}
    [[nodiscard]] std::u16string Cell(int, int, int) const override { return {}; }
    void DeleteRow(int, int) override {}
    [[nodiscard]] int SelectedRowCount(int) const override { return 0; }
    [[nodiscard]] int NextSelectedRow(int, int) const override { return -1; }
    void SelectAllRows(int) override {}
    void FocusRow(int, int) override {}
    bool CreateToolbar(const ToolbarTemplate&) override { return true; }
    [[nodiscard]] Rect ClientRectBesideToolbar() const override { return {}; }
    void MoveAllControls(int, int) override {}
    void PlaceToolbar() override {}
    void EnableToolTips() override {}
    void PressTool(int, bool) override {}
    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHostedControl(const ClassId&, int, const Rect&) override
    {
        return make_control_();
    }
    [[nodiscard]] std::unique_ptr<IHostedControl> TemplateControl(int) override { return nullptr; }
    void CreateLabel(int, const Rect&) override {}
    [[nodiscard]] std::unique_ptr<IPanelWindow> CreatePanel(int, const Rect&) override
    {
        return std::make_unique<CSilentPanel>();
    }

private:
    CSilentMessages& messages_;
    std::function<std::unique_ptr<IHostedControl>()> make_control_;
    std::function<void(IDialogEvents&)> press_;
    int result_ = id_cancel;
};

class CSilentWindows : public IDialogWindows {
public:
    [[nodiscard]] std::unique_ptr<IDialogWindow> Make(const DialogTemplate&) override
    {
        return std::make_unique<CSilentWindow>(messages, makeControl, press);
    }

    CSilentMessages messages;
    std::function<std::unique_ptr<IHostedControl>()> makeControl;
    std::function<void(IDialogEvents&)> press;
};

} // namespace partkeep
