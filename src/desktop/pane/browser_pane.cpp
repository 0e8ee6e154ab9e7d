#include "desktop/pane/browser_pane.h"

#include "desktop/pane/busy_pointer.h"
#include "desktop/pane/pane_widgets.h"
#include "desktop/pane/server_tree_model.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QSet>
#include <QSplitter>

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::size_t few_parts = 256; // are looked up one by one
constexpr qint64 id_block = 16384;

} // namespace

CBrowserPane::CBrowserPane(std::shared_ptr<CBrowserSession> session, const PaneSettings& settings, QWidget* parent)
    : QWidget(parent), session_(std::move(session)), settings_(settings), places_(settings.places_file),
      model_(std::make_unique<CPartListModel>(settings.language)),
      servers_(std::make_unique<CServerTreeModel>([this](const QString& server, const QString& folder) {
          const CBusyPointer busy;
          return session_->Folders(server, folder);
      }))
{
    MakeWidgets();
    Connect();
    session_->AttachPane(this);
    ServersChanged();
}

CBrowserPane::~CBrowserPane()
{
    session_->AttachPane(nullptr);
    delete splitter_; // the views go before their models
}

bool CBrowserPane::HasWork() const
{
    const bool scanning = model_->Started() && !model_->Complete() && !model_->Failed();
    return search_waits_ || scanning || (session_->Library() != nullptr && pictures_.HasWork());
}

// Work between events.

void CBrowserPane::StartWork()
{
    if (HasWork() && !work_.isActive()) {
        work_.start();
    }
}

void CBrowserPane::ListPainted()
{
    StartWork();
}

void CBrowserPane::Work()
{
    if (search_waits_) {
        Search();
    } else if (model_->Started() && !model_->Complete() && !model_->Failed()) {
        model_->Step();
        if (model_->Complete() && selection_waits_) {
            ShowSelection();
        }
        UpdateTexts();
    } else if (pictures_.HasWork() && session_->Library() != nullptr) {
        model_->PictureArrived(pictures_.ReadNext(*session_->Library()));
    }
    if (!HasWork()) {
        work_.stop();
    }
}

void CBrowserPane::Search()
{
    search_waits_ = false;
    searching_ = true;
    session_->SearchFor(search_->text());
    searching_ = false;
}

// The session's calls.

void CBrowserPane::ServersChanged()
{
    ++showing_;
    servers_->SetServers(session_->Servers() + session_->OtherServers());
    servers_->MarkServer(session_->CurrentServer(), session_->Library() != nullptr);
    ShowCurrentPlace();
    --showing_;
    ShowList(false);
}

void CBrowserPane::FolderChanged()
{
    ++showing_;
    search_waits_ = false;
    search_->setText(session_->ListView().search);
    ShowCurrentPlace();
    --showing_;
    ShowList(false);
    list_->scrollToTop();
}

void CBrowserPane::PartListChanged()
{
    ShowList(searching_);
}

void CBrowserPane::SelectionChanged()
{
    ShowSelection();
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

void CBrowserPane::ShowList(bool narrowed)
{
    const PartRow* row = model_->Failed() ? nullptr : model_->Row(list_->currentIndex().row());
    const PartId current = row != nullptr && model_->Library() == session_->Library() ? row->id : 0;
    const FolderRow& folder = session_->CurrentFolder();
    ++showing_;
    if (!narrowed) {
        pictures_.Clear();
    }
    if (session_->Library() == nullptr || folder.id == 0) {
        model_->Clear();
    } else {
        model_->Start(session_->ShareLibrary(), session_->ListView(), folder.parts, session_->ShownUnit(), narrowed);
        model_->Step();
    }
    list_->Header().setSortIndicator(static_cast<int>(session_->ListView().sort),
                                     session_->ListView().descending ? Qt::DescendingOrder : Qt::AscendingOrder);
    ShowSelection();
    if (const auto place = current != 0 ? model_->RowOf(current) : std::nullopt) {
        list_->selectionModel()->setCurrentIndex(model_->index(static_cast<int>(*place), 0),
                                                 QItemSelectionModel::NoUpdate);
        list_->scrollTo(list_->currentIndex());
    }
    --showing_;
    UpdateTexts();
}

// The selection.

void CBrowserPane::ShowSelection()
{
    ++showing_;
    const auto& ids = session_->Selection();
    // Parts far down a long list are found when it is known to its end.
    selection_waits_ = !ids.empty() && !model_->Complete();
    QItemSelection selection;
    if (!selection_waits_ || ids.size() <= few_parts) {
        selection = RowsOf(ids);
    }
    list_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    --showing_;
}

QItemSelection CBrowserPane::RowsOf(const std::vector<PartId>& ids)
{
    QItemSelection selection;
    const auto rows = static_cast<std::size_t>(model_->rowCount());
    if (!ids.empty() && ids.size() == rows && model_->Complete()) {
        // Only what is shown is selected, so this is everything.
        selection.select(model_->index(0, 0), model_->index(model_->rowCount() - 1, part_columns - 1));
    } else if (ids.size() <= few_parts) {
        for (const PartId id : ids) {
            if (const auto row = model_->RowOf(id)) {
                SelectRow(*row, selection);
            }
        }
    } else {
        SelectAmongAll(ids, selection);
    }
    return selection;
}

void CBrowserPane::SelectRow(qint64 row, QItemSelection& selection) const
{
    const int place = static_cast<int>(row);
    const QModelIndex end = model_->index(place, part_columns - 1);
    if (!selection.isEmpty() && selection.back().bottom() + 1 == place) {
        selection.back() = QItemSelectionRange(selection.back().topLeft(), end);
    } else {
        selection.append(QItemSelectionRange(model_->index(place, 0), end));
    }
}

void CBrowserPane::SelectAmongAll(const std::vector<PartId>& ids, QItemSelection& selection)
{
    const QSet<PartId> wanted(ids.begin(), ids.end());
    for (qint64 first = 0; first < model_->rowCount(); first += id_block) {
        qint64 row = first;
        for (const PartId id : model_->Ids(first, id_block)) {
            if (wanted.contains(id)) {
                SelectRow(row, selection);
            }
            ++row;
        }
    }
}

// What the user does.

void CBrowserPane::BeginAction()
{
    if (actions_++ == 0) {
        selection_changed_ = false;
        if (selection_waits_) {
            const CBusyPointer busy;
            model_->Finish();
            ShowSelection();
        }
    }
}

void CBrowserPane::EndAction(bool clicked)
{
    if (--actions_ > 0) {
        return;
    }
    if (tree_->hasFocus() && !selection_changed_) {
        FollowTree(clicked);
    } else if (clicked || selection_changed_) {
        FollowSelection();
    }
    selection_changed_ = false;
    UpdateTexts();
}

void CBrowserPane::FollowSelection()
{
    QItemSelection selection = list_->selectionModel()->selection();
    std::sort(selection.begin(), selection.end(), [](const auto& a, const auto& b) { return a.top() < b.top(); });
    const CBusyPointer busy;
    std::vector<PartId> ids;
    for (const QItemSelectionRange& range : selection) {
        const std::vector<PartId> part = model_->Ids(range.top(), range.height());
        ids.insert(ids.end(), part.begin(), part.end());
    }
    session_->Select(std::move(ids));
}

void CBrowserPane::FollowTree(bool clicked)
{
    const QModelIndex index = tree_->currentIndex();
    const PanePlace place{CServerTreeModel::ServerOf(index), CServerTreeModel::FolderOf(index)};
    const bool reached = session_->Library() != nullptr;
    if (index.isValid() && (place != CurrentPlace() || (clicked && !reached))) {
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
        ++showing_;
        servers_->Forget();
        --showing_;
        ServersChanged();
    }
    UpdateTexts();
}

void CBrowserPane::OnSearchTyped()
{
    search_->repaint(); // the key shows before the search begins
    search_waits_ = true;
    StartWork();
}

void CBrowserPane::TextTyped(const QString& text)
{
    search_->setFocus();
    search_->insert(text);
}

void CBrowserPane::OnSort(int column, Qt::SortOrder order)
{
    if (showing_ == 0) {
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
