// The one door between front ends and the dialogs' logic. Every event of every window comes in here, whenever it
// comes: the door knows how far each run is, whether a handler or a call of the browser is under way and what lies
// over a window, and delivers, keeps or refuses by the table in its source. What a handler throws ends here too.
// One door for each run of the selection dialog; it and everything around it live on the dialog's thread.
#pragma once

#include "controls/control_wrapper.h"
#include "platform/dialog_window.h"
#include "selection/dialog_handler.h"

#include <cstdint>
#include <memory>
#include <string>

namespace partkeep {

class CDialogEntrance;
class CRunLevel;

class CEventDoor {
public:
    explicit CEventDoor(IDialogWindows& windows) : windows_(windows) {}
    CEventDoor(const CEventDoor&) = delete;
    CEventDoor& operator=(const CEventDoor&) = delete;

    [[nodiscard]] bool CallUnderWay() const { return calls_ > 0; }

private:
    friend class CDialogEntrance;
    friend class CRunLevel;

    IDialogWindows& windows_;
    CRunLevel* top_ = nullptr; // what the user is in: the dialog, a keypad over it, or a message over either
    int calls_ = 0;            // of the browser, under way
};

// A dialog's own place at the door: owns the dialog's window and is all that the front end knows of the logic.
// Watches the browser's calls where the dialog has one.
class CDialogEntrance final : public IDialogEvents, public ICallWatch {
public:
    // `dialog` and `handler` must outlive this.
    CDialogEntrance(CEventDoor& door, const DialogTemplate& dialog, IDialogHandler& handler);
    ~CDialogEntrance() override;
    CDialogEntrance(const CDialogEntrance&) = delete;
    CDialogEntrance& operator=(const CDialogEntrance&) = delete;

    [[nodiscard]] IDialogWindow& Window() { return *window_; }

    // The result that EndModal was given; id_cancel where nothing decided, no window could be made, or a handler
    // threw before.
    int RunModal();

    // A window of the owner's run. False when none can be made.
    bool CreateModeless(CDialogEntrance& owner);

    // What decides first stands. False: the run was decided before, or has ended.
    bool EndModal(int result);

    // Messages owned by the window's owner. While one shows, no window of ours takes input; a run that has ended
    // shows none.
    [[nodiscard]] IMessages& OwnerMessages() { return messages_; }

    // The painter as a front end may call it: a picture that cannot be painted is left out.
    [[nodiscard]] static PanelPainter Guarded(PanelPainter painter);

    void OnBrowserEvent(std::int32_t event) noexcept;

    void OnInitDialog() noexcept override;
    bool PreTranslateMessage(const KeyPress& press) noexcept override;
    void OnCommand(int id) noexcept override;
    void OnSelectionChange(int id) noexcept override;
    void OnTextChange(int id) noexcept override;
    void OnPaint() noexcept override;
    void OnDestroy() noexcept override;
    [[nodiscard]] std::u16string ToolTipText(int command) noexcept override;

    void CallBegins() noexcept override { ++door_.calls_; }
    void CallEnds() noexcept override;

private:
    friend class CRunLevel;

    enum class Kind { Init, Key, Command, SelectionChange, TextChange, Click, Paint, Destroy };
    enum class Moment { Starts, Free, Busy, Covered, Closes, Ended };
    enum class Verdict { Refuse, Keep, Deliver };

    struct Event {
        Kind kind;
        int id = 0;
        KeyPress press{};
    };

    class CMessages final : public IMessages {
    public:
        explicit CMessages(CDialogEntrance& entrance) : entrance_(entrance) {}
        void Show(const Message& message) override;

    private:
        CDialogEntrance& entrance_;
    };

    [[nodiscard]] static Verdict TableEntry(Kind kind, Moment moment);
    [[nodiscard]] Moment Now() const;
    void Open(CRunLevel& level);
    Verdict Take(const Event& event) noexcept; // and does what the verdict says
    void Deliver(const Event& event) noexcept;
    void Handle(const Event& event);
    void Recover(Kind kind) noexcept;
    void TellPaint() noexcept;

    CEventDoor& door_;
    IDialogHandler& handler_;
    CMessages messages_{*this};
    CRunLevel* level_ = nullptr; // of the run that the window belongs to
    bool closed_down_ = false;   // the close-down has begun
    bool gone_ = false;          // the window
    bool paint_waits_ = false;   // for the end of a call
    bool painting_ = false;
    std::unique_ptr<IDialogWindow> window_;
};

} // namespace partkeep
