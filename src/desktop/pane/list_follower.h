// Keeps the list of the pane and the session at one: shows what the session has, and tells it what the user selects.
// Knows at any moment who changes the widgets, so that what is only shown is never taken for the user's.
#pragma once

#include "desktop/pane/part_list_model.h"
#include "desktop/pane/part_list_view.h"

#include <QItemSelection>

#include <functional>
#include <utility>
#include <vector>

namespace partkeep {

// Selecting: the user's action that is under way has changed the selection.
enum class PaneState { Idle, Showing, Acting, Selecting };

// All are borrowed.
class CListFollower {
public:
    CListFollower(CBrowserSession& session, CPartListModel& model, CPartListView& list)
        : session_(session), model_(model), list_(list)
    {
    }

    [[nodiscard]] PaneState State() const { return state_; }

    // While it lives changes of the widgets are the session's.
    class CShowing {
    public:
        explicit CShowing(CListFollower& follower)
            : state_(follower.state_), before_(std::exchange(state_, PaneState::Showing))
        {
        }
        ~CShowing() { state_ = before_; }
        CShowing(const CShowing&) = delete;
        CShowing& operator=(const CShowing&) = delete;

    private:
        PaneState& state_;
        PaneState before_;
    };

    // From the session. A list that only a longer search sets apart from the one shown narrows it.
    [[nodiscard]] bool Narrows() const;
    void ShowList();
    void ShowSelection();
    void ShowWaiting(); // once the list is known to its end
    // Changes what is listed; the row that stood at the top stays there.
    void KeepPlace(const std::function<void()>& change);
    void Reveal(); // brings what is selected into view, else the top; as soon as it is known where that is

    // From the user. An action inside another is part of it and not to be given here. True when it has changed the
    // selection.
    bool Act(const std::function<void()>& action);
    [[nodiscard]] bool IsActing() const { return state_ == PaneState::Acting || state_ == PaneState::Selecting; }
    void SelectionChanged();
    void TakeSelection();

private:
    void KeepCurrent(PartId current, int row);
    void SelectRow(qint64 row, QItemSelection& selection) const;
    void SelectAmongAll(const std::vector<PartId>& ids, QItemSelection& selection);
    [[nodiscard]] QItemSelection RowsOf(const std::vector<PartId>& ids);

    CBrowserSession& session_;
    CPartListModel& model_;
    CPartListView& list_;
    PaneState state_ = PaneState::Idle;
    bool reveals_ = false; // what waits, when it comes
    bool waits_ = false;   // the selection, for rows that are not known yet
};

} // namespace partkeep
