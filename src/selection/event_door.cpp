#include "selection/event_door.h"

#include "controls/part_browser_contract.h"

#include <algorithm>
#include <utility>

namespace partkeep {

namespace {

// Input that waits for the end of a handler. More than a person means to give comes only from a control that
// repeats itself.
constexpr std::size_t most_kept_events = 32;

} // namespace

// What runs modally: the selection dialog with its list window, a keypad over them, or a message, which takes no
// event of ours. It lies over what was on top before for as long as this lives.
class CRunLevel {
public:
    enum class State { Starts, Runs, Closes, Ended };

    explicit CRunLevel(CEventDoor& door, IDialogWindow* window = nullptr)
        : door_(door), window_(window), below_(door.top_)
    {
        if (below_ != nullptr) {
            below_->DropInput();
        }
        door_.top_ = this;
    }
    ~CRunLevel() { door_.top_ = below_; }
    CRunLevel(const CRunLevel&) = delete;
    CRunLevel& operator=(const CRunLevel&) = delete;

    [[nodiscard]] bool IsMainWindow(const IDialogWindow& window) const { return window_ == &window; }

    [[nodiscard]] bool IsDecided() const { return state == State::Closes || state == State::Ended; }

    // What decides first stands.
    bool Decide(int decision)
    {
        if (IsDecided()) {
            return false;
        }
        state = State::Closes;
        result = decision;
        window_->EndModal(decision);
        return true;
    }

    // Several clicks become one: each shows what is selected when it is handed on.
    void Keep(CDialogEntrance& entrance, const CDialogEntrance::Event& event)
    {
        const bool click = IsClick({&entrance, event});
        const bool known = click && std::any_of(kept_.begin(), end_, IsClick);
        const auto room = click ? kept_.end() : kept_.end() - 1; // a click always finds a place
        if (!known && end_ != room) {
            *end_++ = {&entrance, event};
        }
    }

    // In the order of coming, each judged as if it came now. What a control fires again and again while it is asked
    // waits for the next event, so that nobody hangs.
    void HandOn() noexcept
    {
        if (std::exchange(handing_on_, true)) {
            return; // the outer one goes on
        }
        for (std::size_t left = most_kept_events; left > 0 && MayHandOn(); --left) {
            const Kept next = kept_.front();
            end_ = std::move(kept_.begin() + 1, end_, kept_.begin());
            next.entrance->Take(next.event);
        }
        handing_on_ = false;
    }

    State state = State::Starts;
    int result = id_cancel;
    int handlers = 0; // under way

private:
    struct Kept {
        CDialogEntrance* entrance = nullptr;
        CDialogEntrance::Event event{};
    };

    [[nodiscard]] bool MayHandOn() const
    {
        return state != State::Starts && handlers == 0 && door_.calls_ == 0 && door_.top_ == this &&
               end_ != kept_.begin();
    }
    static bool IsClick(const Kept& kept) { return kept.event.kind == CDialogEntrance::Kind::Click; }

    // What was meant for the windows as they stood is not meant for them as they stand behind a question.
    void DropInput() { end_ = std::stable_partition(kept_.begin(), end_, IsClick); }

    CEventDoor& door_;
    IDialogWindow* window_;
    CRunLevel* below_;
    bool handing_on_ = false;
    std::array<Kept, most_kept_events> kept_{};
    std::array<Kept, most_kept_events>::iterator end_ = kept_.begin();
};

// ---- The table

// A text has changed already when it is told, so the logic's copy follows at once. A paint that finds a call of
// the browser under way waits for that call alone. What is told of a window that is going is its last.
CDialogEntrance::Verdict CDialogEntrance::TableEntry(Kind kind, Moment moment)
{
    constexpr auto no = Verdict::Refuse;
    constexpr auto keep = Verdict::Keep;
    constexpr auto yes = Verdict::Deliver;
    // clang-format off
    constexpr Verdict rows[][6] = {
        // starts free busy  covered closes ended
        {yes,     yes, yes,  yes,    no,    no}, // Init
        {no,      yes, keep, no,     no,    no}, // Key
        {no,      yes, keep, no,     no,    no}, // Command
        {no,      yes, keep, no,     no,    no}, // SelectionChange
        {yes,     yes, yes,  yes,    yes,   no}, // TextChange
        {keep,    yes, keep, keep,   no,    no}, // Click
        {yes,     yes, yes,  yes,    yes,   no}, // Paint
        {yes,     yes, yes,  yes,    yes,   no}, // Destroy
    };
    // clang-format on
    return rows[static_cast<std::size_t>(kind)][static_cast<std::size_t>(moment)];
}

CDialogEntrance::Moment CDialogEntrance::Now() const
{
    if (gone_ || level_ == nullptr || level_->state == CRunLevel::State::Ended) {
        return Moment::Ended;
    }
    if (level_->state == CRunLevel::State::Closes) {
        return Moment::Closes;
    }
    if (level_->state == CRunLevel::State::Starts) {
        return Moment::Starts;
    }
    if (door_.top_ != level_) {
        return Moment::Covered;
    }
    return level_->handlers > 0 || door_.calls_ > 0 ? Moment::Busy : Moment::Free;
}

// ---- Life

CDialogEntrance::CDialogEntrance(CEventDoor& door, const DialogTemplate& dialog, IDialogHandler& handler)
    : door_(door), handler_(handler), window_(door.windows_.Make(dialog))
{
}

CDialogEntrance::~CDialogEntrance() = default;

int CDialogEntrance::RunModal()
{
    // Takes the window down where its run ends by an exception, while what answers to it still stands.
    struct CWindowEnd {
        IDialogWindow& window;
        ~CWindowEnd() { window.Destroy(); }
    };
    if (door_.top_ != nullptr && door_.top_->state == CRunLevel::State::Ended) {
        return id_cancel; // what would be asked has nobody left to ask
    }
    CRunLevel level(door_, window_.get());
    struct CLevelEnd {
        CRunLevel*& level;
        ~CLevelEnd() { level = nullptr; }
    } const level_end{level_};
    Open(level);
    try {
        const CWindowEnd end{*window_};
        window_->RunModal(*this);
    } catch (...) {
        if (!level.IsDecided()) {
            throw;
        }
    }
    return level.result;
}

bool CDialogEntrance::CreateModeless(CDialogEntrance& owner)
{
    if (owner.Now() == Moment::Ended) {
        return false;
    }
    Open(*owner.level_);
    return window_->CreateModeless(*this, owner.window_.get());
}

void CDialogEntrance::Open(CRunLevel& level)
{
    level_ = &level;
    closed_down_ = false;
    gone_ = false;
    paint_waits_ = false;
}

bool CDialogEntrance::EndModal(int result)
{
    return level_ != nullptr && level_->Decide(result);
}

void CDialogEntrance::CMessages::Show(const Message& message)
{
    if (entrance_.Now() == Moment::Ended) {
        return;
    }
    const CRunLevel over(entrance_.door_);
    entrance_.window_->OwnerMessages().Show(message);
}

PanelPainter CDialogEntrance::Guarded(PanelPainter painter)
{
    return [painter = std::move(painter)](IDeviceContext& context) {
        try {
            painter(context);
        } catch (...) {
            return;
        }
    };
}

// ---- Events

CDialogEntrance::Verdict CDialogEntrance::Take(const Event& event) noexcept
{
    const Verdict verdict = TableEntry(event.kind, Now());
    if (verdict == Verdict::Deliver) {
        Deliver(event);
    } else if (verdict == Verdict::Keep) {
        level_->Keep(*this, event);
    }
    return verdict;
}

void CDialogEntrance::Deliver(const Event& event) noexcept
{
    CRunLevel& level = *level_;
    ++level.handlers;
    try {
        Handle(event);
    } catch (...) {
        Recover(event.kind);
    }
    --level.handlers;
    level.HandOn();
}

void CDialogEntrance::Handle(const Event& event)
{
    switch (event.kind) {
    case Kind::Init:
        handler_.OnInitDialog();
        break;
    case Kind::Key:
        handler_.OnKey(event.press);
        break;
    case Kind::Command:
        handler_.OnCommand(event.id);
        break;
    case Kind::SelectionChange:
        handler_.OnSelectionChange(event.id);
        break;
    case Kind::TextChange:
        handler_.OnTextChange(event.id);
        break;
    case Kind::Click:
        handler_.OnBrowserClick();
        break;
    case Kind::Paint:
        handler_.OnPaint();
        break;
    case Kind::Destroy:
        handler_.OnDestroy();
        break;
    }
}

// A preview that failed costs the pictures. Behind any other failure nobody knows how far things came, so the run
// ends as by Cancel, unless it was decided before.
void CDialogEntrance::Recover(Kind kind) noexcept
{
    try {
        if (kind == Kind::Click) {
            handler_.OnBrowserClickFailed();
        } else {
            level_->Decide(id_cancel);
        }
    } catch (...) {
        return; // there is nothing left to try
    }
}

void CDialogEntrance::OnInitDialog() noexcept
{
    const bool starts = level_ != nullptr && level_->IsMainWindow(*window_);
    if (!starts) { // of a window beside the dialog, in a run that goes on
        Take({Kind::Init});
        return;
    }
    ++level_->handlers; // what comes meanwhile is handed on to a run, not to a start
    Take({Kind::Init});
    --level_->handlers;
    if (level_->state == CRunLevel::State::Starts) {
        level_->state = CRunLevel::State::Runs;
    }
    level_->HandOn();
}

// A key that is refused reaches no control either.
bool CDialogEntrance::PreTranslateMessage(const KeyPress& press) noexcept
{
    if (TableEntry(Kind::Key, Now()) == Verdict::Refuse) {
        return true;
    }
    if (!handler_.TakesKey(press)) {
        return false;
    }
    Take({Kind::Key, 0, press});
    return true;
}

void CDialogEntrance::OnCommand(int id) noexcept
{
    Take({Kind::Command, id});
}

void CDialogEntrance::OnSelectionChange(int id) noexcept
{
    Take({Kind::SelectionChange, id});
}

void CDialogEntrance::OnTextChange(int id) noexcept
{
    Take({Kind::TextChange, id});
}

void CDialogEntrance::OnBrowserEvent(std::int32_t event) noexcept
{
    if (event == static_cast<std::int32_t>(BrowserEvent::Click)) {
        Take({Kind::Click});
    }
}

void CDialogEntrance::OnPaint() noexcept
{
    if (door_.CallUnderWay()) {
        paint_waits_ = !painting_; // what a paint brings about itself is done with it
    } else {
        TellPaint();
    }
}

void CDialogEntrance::TellPaint() noexcept
{
    if (!std::exchange(painting_, true)) {
        Take({Kind::Paint});
        painting_ = false;
    }
}

// The window goes whatever is under way: what was not decided by now is a cancel.
void CDialogEntrance::OnDestroy() noexcept
{
    if (Now() == Moment::Ended || std::exchange(closed_down_, true)) {
        return;
    }
    CRunLevel& level = *level_;
    const bool ends_run = level.IsMainWindow(*window_);
    if (ends_run) {
        level.state = CRunLevel::State::Closes;
    }
    Take({Kind::Destroy});
    gone_ = true;
    if (ends_run) {
        level.state = CRunLevel::State::Ended;
    }
}

std::u16string CDialogEntrance::ToolTipText(int command) noexcept
{
    try {
        return handler_.ToolTipText(command);
    } catch (...) {
        return {};
    }
}

void CDialogEntrance::CallEnds() noexcept
{
    --door_.calls_;
    if (door_.calls_ == 0 && std::exchange(paint_waits_, false)) {
        TellPaint();
    }
}

} // namespace partkeep
