// What the widgets and keys of a dialog window tell, on its way to the events' door. While no run has begun or the last
// one has ended nothing is told. Borrows the window's frame, owner and controls.
#pragma once

#include "desktop/control_set.h"
#include "desktop/dialog_frame.h"
#include "desktop/hosted_control_factory.h"
#include "platform/dialog_window.h"

#include <QPointer>

#include <string>

namespace partkeep {

class CQtDialogEvents : public IDialogFrameEvents {
public:
    CQtDialogEvents(const QPointer<CDialogFrame>& frame, const QPointer<QWidget>& owner, const CControlSet& controls,
                    IDialogFields& fields)
        : frame_(frame), owner_(owner), controls_(controls), fields_(fields)
    {
    }

    void Begin(IDialogEvents& events) { events_ = &events; }
    void End() { events_ = nullptr; }
    [[nodiscard]] IWindowKeys* WindowKeys() const { return keys_widget_ ? keys_ : nullptr; }
    [[nodiscard]] QWidget* WindowKeysWidget() const { return keys_widget_; }
    [[nodiscard]] bool IsBegun() const { return events_ != nullptr; }
    // One of them has not returned yet: the window may be closed from inside it.
    [[nodiscard]] bool IsTelling() const { return told_ > 0; }

    void Connect(int id, QWidget* widget);
    // Of this window, or of the one that it belongs to. Null: there are none.
    void SetWindowKeys(IWindowKeys* keys, QWidget* widget);
    void InitDialog() { Tell(&IDialogEvents::OnInitDialog); }
    void Destroy() { Tell(&IDialogEvents::OnDestroy); }
    void Command(int id) { Tell(&IDialogEvents::OnCommand, id); }
    [[nodiscard]] std::u16string ToolTipText(int command) { return Tell(&IDialogEvents::ToolTipText, command); }

    bool KeyDown(const QKeyEvent& event) override;
    void CloseBox() override { Command(id_cancel); }
    void Requested(DialogRequest request) override;
    void Painted() override { Tell(&IDialogEvents::OnPaint); }
    void FrameGoes() override { Destroy(); } // with its owner

private:
    // False, or nothing, where nobody is told.
    template <typename Answer, typename... Taken, typename... Given>
    Answer Tell(Answer (IDialogEvents::*event)(Taken...) noexcept, const Given&... given)
    {
        struct CTold {
            int& count;
            ~CTold() { --count; }
        };
        if (events_ == nullptr) {
            return Answer();
        }
        const CTold told{++told_};
        return (events_->*event)(given...);
    }
    bool DefaultKey(const KeyPress& press);
    [[nodiscard]] bool TakeWindowKey(const QKeyEvent& event);
    void PressDefault();
    void GoToNextWindow();

    const QPointer<CDialogFrame>& frame_;
    const QPointer<QWidget>& owner_;
    const CControlSet& controls_;
    IDialogFields& fields_;
    IDialogEvents* events_ = nullptr;
    IWindowKeys* keys_ = nullptr; // good for as long as the widget is
    QPointer<QWidget> keys_widget_;
    int told_ = 0;
};

} // namespace partkeep
