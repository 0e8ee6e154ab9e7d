// The user, the windows' life and the window as a whole; the controls are in scripted_window_controls.cpp.

#include "tests/support/scripted_window.h"

#include "tests/support/scripted_window_notes.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace partkeep {

std::unique_ptr<IDialogWindow> CScriptedWindows::Make(const DialogTemplate& dialog)
{
    return std::make_unique<CScriptedWindow>(*this, dialog);
}

CScriptedWindow* CScriptedWindows::Find(int number) const
{
    const auto window = std::find_if(windows_.begin(), windows_.end(), [number](const CScriptedWindow* candidate) {
        return candidate->Number() == number;
    });
    return window == windows_.end() ? nullptr : *window;
}

CScriptedWindow::CScriptedWindow(CScriptedWindows& windows, const DialogTemplate& dialog)
    : windows_(windows), template_(dialog)
{
}

CScriptedWindow::~CScriptedWindow()
{
    Close();
}

// ---- The user

bool CScriptedWindow::TakesInput(int id) const
{
    return Exists() && inputEnabled && At(id).enabled && At(id).visible;
}

void CScriptedWindow::PressButton(int id)
{
    if (!TakesInput(id)) {
        return;
    }
    if (At(id).kind == ControlKind::CheckBox) {
        controls[id].check = 1 - controls[id].check;
    }
    focused = controls.count(id) != 0 ? id : focused; // a tool leaves it
    handler_->OnCommand(id);
}

void CScriptedWindow::PressKey(const KeyPress& press)
{
    if (!inputEnabled || handler_->PreTranslateMessage(press)) {
        return;
    }
    if (press.key == key_tab) {
        MoveFocusByOrder(!press.shift);
    } else if (press.key == key_escape) {
        handler_->OnCommand(id_cancel);
    } else if (press.key == key_return) {
        handler_->OnCommand(IsButton(At(focused).kind) ? focused : id_ok);
    } else {
        Note("key " + std::to_string(press.key) + " to " + std::to_string(focused));
    }
}

void CScriptedWindow::TypeText(int id, std::u16string_view text)
{
    ControlModel& edit = controls.at(id);
    if (!TakesInput(id) || edit.readOnly) {
        return;
    }
    focused = id;
    for (const char16_t unit : text) {
        EraseSelection(edit);
        if (edit.text.size() < edit.limit) {
            edit.text += unit;
            handler_->OnTextChange(id);
        }
    }
}

void CScriptedWindow::SelectText(int id, std::size_t start, std::size_t end)
{
    ControlModel& edit = controls.at(id);
    edit.selectionStart = std::min(start, edit.text.size());
    edit.selectionEnd = std::min(end, edit.text.size());
}

void CScriptedWindow::ChooseEntry(int id, int index)
{
    if (TakesInput(id)) {
        controls[id].selectedEntry = index;
        handler_->OnSelectionChange(id);
    }
}

void CScriptedWindow::SelectRows(int id, const std::set<int>& rows)
{
    int number = 0;
    for (ScriptedRow& row : controls.at(id).rows) {
        row.selected = rows.count(number++) != 0;
    }
}

void CScriptedWindow::PressCloseBox()
{
    if (inputEnabled) {
        handler_->OnCommand(id_cancel);
    }
}

// ---- Life

int CScriptedWindow::RunModal(IDialogHandler& handler)
{
    if (!windows_.canMakeWindows) {
        return -1;
    }
    Note("RunModal");
    owner = windows_.windows_.empty() ? nullptr : windows_.windows_.back();
    modalEnded_ = false;
    Open(handler);
    visible = true;
    PlayRun();
    Close();
    Note("result " + std::to_string(modalResult_));
    return modalResult_;
}

void CScriptedWindow::PlayRun()
{
    auto& scripts = windows_.scripts[Number()];
    std::vector<UserAction> actions;
    if (!scripts.empty()) {
        actions = std::move(scripts.front());
        scripts.pop();
    }
    for (const UserAction& action : actions) {
        if (modalEnded_) {
            ADD_FAILURE() << "window " << Number() << " ended before its user was done";
            return;
        }
        action(*this);
    }
    if (!modalEnded_) {
        ADD_FAILURE() << "window " << Number() << " is open and its user has nothing more to do";
        PressCloseBox();
    }
}

bool CScriptedWindow::CreateModeless(IDialogHandler& handler, IDialogWindow* owner_window)
{
    if (!windows_.canMakeWindows) {
        return false;
    }
    Note("CreateModeless");
    owner = static_cast<CScriptedWindow*>(owner_window);
    Open(handler);
    return true;
}

void CScriptedWindow::Open(IDialogHandler& handler)
{
    handler_ = &handler;
    controls.clear();
    for (const auto& source : template_.controls) {
        ControlModel& control = controls[source.id];
        control.kind = source.kind;
        control.area = InPixels(source.x, source.y, source.width, source.height);
        control.text = source.kind == ControlKind::HostedControl ? u"" : source.caption;
        control.readOnly = source.kind == ControlKind::ReadOnlyEdit;
    }
    windows_.windows_.push_back(this);
    handler.OnInitDialog();
    if (focused == 0) {
        MoveFocusByOrder(true);
    }
}

void CScriptedWindow::Close()
{
    if (IDialogHandler* handler = handler_) {
        handler->OnDestroy();
        handler_ = nullptr;
        visible = false;
        std::erase(windows_.windows_, this);
    }
}

void CScriptedWindow::EndModal(int result)
{
    Note("EndModal " + Shown(result));
    modalEnded_ = true;
    modalResult_ = result;
}

void CScriptedWindow::Destroy()
{
    if (Exists()) {
        Note("Destroy");
        Close();
    }
}

// ---- The window as a whole

void CScriptedWindow::SetTitle(std::u16string_view text)
{
    Note("SetTitle " + Shown(text));
    title = text;
}

void CScriptedWindow::SetSmallIcon(IconHandle icon)
{
    Note(icon == nullptr               ? "SetSmallIcon none"
         : icon == windows_.parentIcon ? "SetSmallIcon parent's"
                                       : "SetSmallIcon other");
}

void CScriptedWindow::Show(bool now_visible)
{
    Note("Show " + Shown(visible = now_visible));
}

void CScriptedWindow::EnableOwner(bool enabled)
{
    Note("EnableOwner " + Shown(enabled));
    if (owner != nullptr) {
        owner->inputEnabled = enabled;
    }
}

void CScriptedWindow::BeginWait()
{
    Note("BeginWait");
    ++waits;
}

void CScriptedWindow::EndWait()
{
    Note("EndWait");
    --waits;
}

Rect CScriptedWindow::ClientRect() const
{
    return InPixels(0, 0, template_.width, template_.height);
}

} // namespace partkeep
