#include "desktop/pane/browser_pane.h"

#include "desktop/pane/busy_pointer.h"
#include "desktop/pane/pane_widgets.h"
#include "desktop/pane/server_tree_model.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QSplitter>

#include <algorithm>

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
    work_ = std::make_unique<CWorkSlices>(*session_, *model_, pictures_, [this] {
        follower_->ShowWaiting();
        UpdateTexts();
    });
    Connect();
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
    list_->scrollToTop();
}

void CBrowserPane::PartListChanged()
{
    if (!follower_->Narrows()) {
        pictures_.Clear();
    }
    follower_->ShowList();
    UpdateTexts();
}

void CBrowserPane::SelectionChanged()
{
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
    RememberPlace();
    UpdateTexts();
}

void CBrowserPane::RememberPlace()
{
    if (session_->Library() != nullptr && session_->CurrentFolder().id != 0) {
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
    }
}

void CBrowserPane::keyPressEvent(QKeyEvent* event)
{
    const bool control = event->modifiers() == Qt::ControlModifier;
    if (control && event->key() == Qt::Key_F) {
        search_->setFocus();
        search_->selectAll();
    } else if (control && event->key() == Qt::Key_D && session_->CurrentFolder().id != 0) {
        places_.ToggleFavourite(CurrentPlace());
    } else if (event->key() == Qt::Key_F5) {
        Refresh();
    } else if (event->modifiers() == Qt::AltModifier && event->key() == Qt::Key_Up) {
        GoUp();
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace partkeep
