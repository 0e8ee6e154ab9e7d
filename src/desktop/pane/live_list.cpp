#include "desktop/pane/live_list.h"

#include <QApplication>

#include <algorithm>
#include <utility>

namespace partkeep {

namespace {

constexpr int look_ms = 500;
constexpr int first_look_ms = 50; // while a connection is made
constexpr int first_looks = 20;
constexpr int next_branch_ms = 10;

} // namespace

CLiveList::CLiveList(CBrowserSession& session, CPartListModel& model, CPartListView& list, CListFollower& follower,
                     CLiveTree& tree, CWorkSlices& work)
    : session_(session), model_(model), list_(list), follower_(follower), tree_(tree), work_(work)
{
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Look(); });
}

void CLiveList::Start()
{
    if (!timer_.isActive()) {
        timer_.start(first_look_ms);
    }
}

void CLiveList::Stop()
{
    notifier_.reset();
    library_.reset();
    tree_.Forget();
    asked_for_.clear();
    changed_ = false;
    looks_ = 0;
}

// A keypad, a message, a menu, a drag, a button that is held, and what the dialog is being told.
bool CLiveList::MayChange() const
{
    const QWidget* const modal = QApplication::activeModalWidget();
    return (modal == nullptr || modal == list_.window()) && QApplication::activePopupWidget() == nullptr &&
           QApplication::mouseButtons() == Qt::NoButton && follower_.State() == PaneState::Idle && !list_.Pressed() &&
           !tree_.Pressed();
}

// One branch at a look, lest a slow line makes the pane stand still. Whether there are more.
bool CLiveList::Follow()
{
    if (std::exchange(changed_, false)) {
        asked_for_.clear(); // what was read ahead is as it was before
        follower_.KeepPlace([this] { session_.Follow(); });
        tree_.Change();
    }
    if (tree_.HasWork()) {
        tree_.Step();
    }
    return tree_.HasWork();
}

void CLiveList::Look()
{
    if (session_.Library() != library_.get()) {
        Stop();
        library_ = session_.ShareLibrary();
    }
    if (library_ == nullptr || !list_.isVisible()) {
        timer_.stop(); // until the next paint
        return;
    }
    changed_ = library_->LookForChange() || changed_;
    WatchSocket();
    if (library_->PicturesCame()) {
        work_.TakePictures();
    }
    const bool goes_on = MayChange() && Follow();
    timer_.setInterval(goes_on ? next_branch_ms : ++looks_ < first_looks ? first_look_ms : look_ms);
    std::vector<PartId> next = LikelyNext();
    if (next != asked_for_) {
        asked_for_ = std::move(next);
        library_->ReadAhead(asked_for_);
    }
}

// The socket is another one after each connection.
void CLiveList::WatchSocket()
{
    const int socket = library_->ChangeSocket();
    if (notifier_ != nullptr && notifier_->socket() == socket) {
        return;
    }
    notifier_.reset();
    if (socket >= 0) {
        notifier_ = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Read);
        QObject::connect(
            notifier_.get(), &QSocketNotifier::activated, &timer_, [this] { Look(); }, Qt::QueuedConnection);
    }
}

// Selected, in view, and a view before and behind.
std::vector<PartId> CLiveList::LikelyNext() const
{
    const int top = std::max(0, list_.indexAt({0, 0}).row());
    const int shown = list_.viewport()->height() / std::max(1, list_.RowHeight()) + 1;
    std::vector<PartId> parts = model_.Ids(top, shown);
    const auto add = [&parts](const std::vector<PartId>& more) { parts.insert(parts.end(), more.begin(), more.end()); };
    add(model_.Ids(top + shown, shown));
    add(model_.Ids(std::max(0, top - shown), std::min(top, shown)));
    const auto& selected = session_.Selection();
    parts.insert(parts.begin(), selected.begin(),
                 selected.begin() + std::min<std::ptrdiff_t>(std::ssize(selected), 256));
    return parts;
}

} // namespace partkeep
