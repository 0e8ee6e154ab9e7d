#include "desktop/pane/list_follower.h"

#include "desktop/pane/busy_pointer.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QSet>

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::size_t few_parts = 256; // are looked up one by one
constexpr qint64 id_block = 16384;

} // namespace

bool CListFollower::Narrows() const
{
    const PartListView* shown = model_.View();
    PartListView narrower = session_.ListView();
    const bool search_alone = shown != nullptr && shown->search != std::exchange(narrower.search, shown->search);
    return search_alone && narrower == *shown && model_.Library() == session_.Library();
}

void CListFollower::ShowList()
{
    list_.KeepAnchor(-1);
    const PartRow* row = model_.Failed() ? nullptr : model_.Row(list_.currentIndex().row());
    const PartId current = row != nullptr && model_.Library() == session_.Library() ? row->id : 0;
    const FolderRow& folder = session_.CurrentFolder();
    const PartListView view = session_.ListView();
    const CShowing showing(*this);
    reveals_ = false;
    if (session_.Library() == nullptr || folder.id == 0) {
        model_.Clear();
    } else {
        model_.SetServer(session_.CurrentServer());
        model_.Start(session_.ShareLibrary(), view, folder.parts, session_.ShownUnit(), Narrows());
        model_.Step();
    }
    list_.SetResults(session_.ShowsResults());
    list_.Header().setSortIndicator(static_cast<int>(view.sort),
                                    view.descending ? Qt::DescendingOrder : Qt::AscendingOrder);
    ShowSelection();
    if (const auto place = current != 0 ? model_.RowOf(current) : std::nullopt) {
        list_.selectionModel()->setCurrentIndex(model_.index(static_cast<int>(*place), 0),
                                                QItemSelectionModel::NoUpdate);
        list_.scrollTo(list_.currentIndex());
    }
}

// Parts far down a long list are found when it is known to its end.
void CListFollower::ShowSelection()
{
    const CShowing showing(*this);
    const auto& ids = session_.Selection();
    waits_ = !ids.empty() && !model_.Complete();
    QItemSelection selection;
    if (!waits_ || ids.size() <= few_parts) {
        selection = RowsOf(ids);
    }
    list_.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void CListFollower::ShowWaiting()
{
    if (waits_ && model_.Complete()) {
        ShowSelection();
        if (reveals_) {
            Reveal();
        }
    }
}

void CListFollower::KeepPlace(const std::function<void()>& change)
{
    QScrollBar& bar = *list_.verticalScrollBar();
    const int before = bar.value();
    const int top = list_.indexAt({0, 0}).row();
    const PartId part = top >= 0 ? model_.PartAt(top) : 0;
    const int row = list_.currentIndex().row();
    const PartId current = row >= 0 ? model_.PartAt(row) : 0;
    const PartId anchor = list_.Anchor();
    change();
    const int needed = std::max(top + list_.viewport()->height() / list_.RowHeight(), row);
    while (model_.rowCount() <= needed && model_.Step()) {
    }
    KeepCurrent(current, row);
    list_.KeepAnchor(static_cast<int>(model_.RowOf(anchor).value_or(-1)));
    const auto place = part != 0 ? model_.RowOf(part) : std::nullopt;
    const int moved = place ? (static_cast<int>(*place) - top) * list_.RowHeight() : 0;
    list_.UpdateRange();
    bar.setValue(before + moved);
}

// By the part, or where it has gone by the row.
void CListFollower::KeepCurrent(PartId current, int row)
{
    if (row < 0 || list_.currentIndex().isValid() || model_.rowCount() == 0) {
        return;
    }
    const CShowing showing(*this);
    const int place = static_cast<int>(model_.RowOf(current).value_or(std::min(row, model_.rowCount() - 1)));
    list_.selectionModel()->setCurrentIndex(model_.index(place, 0), QItemSelectionModel::NoUpdate);
}

void CListFollower::Reveal()
{
    const CShowing showing(*this);
    const auto& ids = session_.Selection();
    const auto row = ids.empty() ? std::nullopt : model_.RowOf(ids.front());
    reveals_ = !ids.empty() && !row && waits_;
    if (row) {
        list_.selectionModel()->setCurrentIndex(model_.index(static_cast<int>(*row), 0), QItemSelectionModel::NoUpdate);
        list_.scrollTo(list_.currentIndex());
    } else {
        list_.scrollToTop();
    }
}

QItemSelection CListFollower::RowsOf(const std::vector<PartId>& ids)
{
    QItemSelection selection;
    const auto rows = static_cast<std::size_t>(model_.rowCount());
    if (!ids.empty() && ids.size() == rows && model_.Complete()) {
        // Only what is shown is selected, so this is everything.
        selection.select(model_.index(0, 0), model_.index(model_.rowCount() - 1, part_columns - 1));
    } else if (ids.size() <= few_parts) {
        for (const PartId id : ids) {
            if (const auto row = model_.RowOf(id)) {
                SelectRow(*row, selection);
            }
        }
    } else {
        SelectAmongAll(ids, selection);
    }
    return selection;
}

void CListFollower::SelectRow(qint64 row, QItemSelection& selection) const
{
    const int place = static_cast<int>(row);
    const QModelIndex end = model_.index(place, part_columns - 1);
    if (!selection.isEmpty() && selection.back().bottom() + 1 == place) {
        selection.back() = QItemSelectionRange(selection.back().topLeft(), end);
    } else {
        selection.append(QItemSelectionRange(model_.index(place, 0), end));
    }
}

void CListFollower::SelectAmongAll(const std::vector<PartId>& ids, QItemSelection& selection)
{
    const QSet<PartId> wanted(ids.begin(), ids.end());
    for (qint64 first = 0; first < model_.rowCount(); first += id_block) {
        qint64 row = first;
        for (const PartId id : model_.Ids(first, id_block)) {
            if (wanted.contains(id)) {
                SelectRow(row, selection);
            }
            ++row;
        }
    }
}

// From the user.

bool CListFollower::Act(const std::function<void()>& action)
{
    if (waits_) {
        const CBusyPointer busy;
        model_.Finish();
        ShowSelection();
    }
    struct CActionEnd { // also where the action throws: what is shown later is not the user's
        PaneState& state;
        ~CActionEnd() { state = PaneState::Idle; }
    } const end{state_ = PaneState::Acting};
    action();
    return state_ == PaneState::Selecting;
}

// The view scrolls on by itself while the pointer is held outside, and that is no action.
void CListFollower::SelectionChanged()
{
    if (state_ == PaneState::Idle) {
        TakeSelection();
    } else if (state_ == PaneState::Acting) {
        state_ = PaneState::Selecting;
    }
}

void CListFollower::TakeSelection()
{
    QItemSelection selection = list_.selectionModel()->selection();
    std::sort(selection.begin(), selection.end(), [](const auto& a, const auto& b) { return a.top() < b.top(); });
    const CBusyPointer busy;
    std::vector<PartId> ids;
    for (const QItemSelectionRange& range : selection) {
        const std::vector<PartId> part = model_.Ids(range.top(), range.height());
        ids.insert(ids.end(), part.begin(), part.end());
    }
    session_.Select(std::move(ids));
}

} // namespace partkeep
