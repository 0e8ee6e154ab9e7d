#include "desktop/pane/browser_pane.h"

#include "desktop/dialog_request.h"
#include "desktop/pane/busy_pointer.h"
#include "desktop/pane/key_sheet.h"
#include "desktop/pane/pane_widgets.h"
#include "desktop/pane/part_row_delegate.h"
#include "desktop/pane/search_line.h"
#include "desktop/pane/server_tree_model.h"
#include "partlibrary/library/sort_text.h"

#include <QDrag>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QSplitter>

#include <algorithm>
#include <utility>

namespace partkeep {

CBrowserPane::CBrowserPane(std::shared_ptr<CBrowserSession> session, const PaneSettings& settings, QWidget* parent)
    : QWidget(parent), session_(std::move(session)), settings_(settings), places_(settings.places_file),
      model_(std::make_unique<CPartListModel>(settings.language)),
      servers_(std::make_unique<CServerTreeModel>([this](const QString& server, const QString& folder) {
          const CBusyPointer busy;
          return session_->Folders(server, folder);
      }))
{
    MakeWidgets();
    follower_ = std::make_unique<CListFollower>(*session_, *model_, *list_);
    work_ = std::make_unique<CWorkSlices>(*list_, *session_, *model_, pictures_, [this] {
        follower_->ShowWaiting();
        UpdateTexts();
    });
    live_tree_ = std::make_unique<CLiveTree>(*session_, *servers_, *tree_);
    live_ = std::make_unique<CLiveList>(*session_, *model_, *list_, *follower_, *live_tree_, *work_);
    Connect();
    session_->SearchIn(places_.SearchesServer() ? SearchScope::Server : SearchScope::Folder);
    session_->AttachPane(this);
    ServersChanged();
}

CBrowserPane::~CBrowserPane()
{
    session_->AttachPane(nullptr);
    delete splitter_; // the views go before their models
}

// The session's calls.

void CBrowserPane::ServersChanged()
{
    live_->Stop();
    servers_->SetServers(session_->Servers() + session_->OtherServers());
    servers_->MarkServer(session_->CurrentServer(), session_->Library() != nullptr);
    ShowCurrentPlace();
    PartListChanged();
}

void CBrowserPane::FolderChanged()
{
    {
        const CListFollower::CShowing showing(*follower_);
        work_->ForgetSearch();
        search_->setText(session_->ListView().search);
    }
    ShowCurrentPlace();
    PartListChanged();
    follower_->Reveal();
}

void CBrowserPane::PartListChanged()
{
    if (!follower_->Narrows()) {
        pictures_.Clear();
    }
    note_.clear();
    delegate_->SetSearchWords(SearchWords(session_->ListView().search));
    SetRowHeight();
    follower_->ShowList();
    if (session_->ShowsResults()) {
        results_text_ = session_->ListView().search;
    }
    UpdateTexts();
}

void CBrowserPane::SelectionChanged()
{
    note_.clear();
    follower_->ShowSelection();
    UpdateTexts();
}

void CBrowserPane::ProblemChanged()
{
    UpdateTexts();
}

void CBrowserPane::ShowCurrentPlace()
{
    const QModelIndex place = servers_->Find(session_->CurrentServer(), session_->CurrentFolder().path);
    tree_->setCurrentIndex(place);
    if (place.isValid()) {
        tree_->expand(place.parent().isValid() ? place.parent() : place);
        tree_->scrollTo(place);
    }
}

// What the user does.

void CBrowserPane::Act(bool clicked, const std::function<void()>& action)
{
    if (follower_->IsActing()) {
        action();
        return;
    }
    const bool selected = follower_->Act(action);
    if (tree_->hasFocus() && !selected) {
        FollowTree(clicked);
    } else if (clicked || selected) {
        note_.clear();
        follower_->TakeSelection();
    }
    UpdateTexts();
}

void CBrowserPane::FollowTree(bool clicked)
{
    const QModelIndex index = tree_->currentIndex();
    const PanePlace place{CServerTreeModel::ServerOf(index), CServerTreeModel::FolderOf(index)};
    if (index.isValid() && (clicked || place != CurrentPlace())) {
        GoTo(place);
    } else if (clicked) {
        session_->Select(std::vector<PartId>(session_->Selection()));
    }
}

PanePlace CBrowserPane::CurrentPlace() const
{
    return {session_->CurrentServer(), session_->CurrentFolder().path};
}

// One click at the end, whatever it takes to get there.
void CBrowserPane::GoTo(const PanePlace& place)
{
    const CBusyPointer busy;
    session_->Go(place.server, place.folder);
    UpdateTexts();
}

void CBrowserPane::RememberPlace()
{
    const QList<PanePlace>& recent = places_.Recent();
    const bool known = !recent.isEmpty() && recent.front() == CurrentPlace();
    if (!known && session_->Library() != nullptr && session_->CurrentFolder().id != 0) {
        places_.Visit(CurrentPlace());
    }
}

void CBrowserPane::GoUp()
{
    const PanePlace place = CurrentPlace();
    if (!place.folder.isEmpty()) {
        GoTo({place.server, place.folder.left(std::max<qsizetype>(0, place.folder.lastIndexOf(u'\\')))});
    }
}

// A server that cannot be reached keeps its branches: reading them again would only wait for it once more.
void CBrowserPane::Refresh()
{
    const CBusyPointer busy;
    if (session_->CurrentServer().isEmpty() || session_->Refresh()) {
        servers_->Forget();
        ServersChanged();
    }
    UpdateTexts();
}

void CBrowserPane::OnSearchTyped()
{
    search_->repaint(); // the key shows before the search begins
    work_->Search(search_->text());
}

void CBrowserPane::TextTyped(const QString& text)
{
    search_->setFocus();
    search_->insert(text);
}

void CBrowserPane::OnSort(int column, Qt::SortOrder order)
{
    if (follower_->State() != PaneState::Showing) {
        const CBusyPointer busy;
        session_->SortBy(static_cast<PartColumn>(column), order == Qt::DescendingOrder);
        follower_->Reveal();
    }
}

// A paint is the first moment behind a change at which a timer may be started.
void CBrowserPane::ListPainted()
{
    work_->Start();
    live_->Start();
    if (stay_place_ != CurrentPlace()) {
        stay_place_ = CurrentPlace();
        stay_.start();
    }
}

void CBrowserPane::SearchIn(SearchScope scope)
{
    places_.SetSearchesServer(scope == SearchScope::Server);
    session_->SearchIn(scope);
    UpdateTexts();
}

void CBrowserPane::GoToSearch()
{
    window()->activateWindow();
    search_->setFocus();
    search_->selectAll();
}

void CBrowserPane::BackToResults()
{
    if (results_text_.isEmpty() || session_->ShowsResults()) {
        return;
    }
    session_->SearchIn(SearchScope::Server);
    search_->setText(results_text_);
    search_->setFocus();
}

void CBrowserPane::DoubleClicked(PartId part)
{
    if (session_->Selection() == std::vector<PartId>{part}) {
        PostDialogRequest(*window(), DialogRequest::Choose);
    }
}

// The drag has a loop of its own, in which the dialog may end, and which may go on with the next press when this one is
// over and not left yet.
void CBrowserPane::DragSelection()
{
    if (std::exchange(dragging_, true)) {
        return;
    }
    const QPointer<CBrowserPane> self(this);
    auto* parts = new QMimeData;
    parts->setData(QLatin1String(dragged_parts_type), QByteArray());
    auto* drag = new QDrag(this); // deletes itself
    drag->setMimeData(parts);
    const Qt::DropAction action = drag->exec(Qt::CopyAction);
    if (self == nullptr) {
        return;
    }
    dragging_ = false;
    if (action == Qt::CopyAction) {
        PostDialogRequest(*window(), DialogRequest::Add);
    }
}

bool CBrowserPane::TakeWindowKey(const QKeyEvent& event)
{
    const QKeyCombination key = event.keyCombination();
    const std::pair<QKeyCombination, void (CBrowserPane::*)()> keys[] = {
        {Qt::CTRL | Qt::Key_F, &CBrowserPane::GoToSearch},
        {Qt::CTRL | Qt::Key_D, &CBrowserPane::ToggleFavourite},
        {QKeyCombination(Qt::Key_F5), &CBrowserPane::Refresh},
        {QKeyCombination(Qt::Key_F1), &CBrowserPane::ToggleKeySheet},
        {Qt::ALT | Qt::Key_Up, &CBrowserPane::GoUp},
        {Qt::ALT | Qt::Key_Left, &CBrowserPane::BackToResults},
    };
    for (const auto& [combination, action] : keys) {
        if (key == combination) {
            (this->*action)();
            return true;
        }
    }
    if (key == (Qt::CTRL | Qt::SHIFT | Qt::Key_F)) {
        search_line_->Switch();
        GoToSearch();
        return true;
    }
    return false;
}

void CBrowserPane::keyPressEvent(QKeyEvent* event)
{
    if (list_->hasFocus() && event->matches(QKeySequence::Copy)) {
        CopyNames();
    } else if (!TakeWindowKey(*event)) {
        QWidget::keyPressEvent(event);
    }
}

} // namespace partkeep
