// Keeps a list, and the folders beside it, up with what others change in their library, and has what the user is likely
// to look at next brought here: between events, never inside a call of the component, and not while anything is open
// that the list must stand still for.
#pragma once

#include "desktop/pane/list_follower.h"
#include "desktop/pane/live_tree.h"
#include "desktop/pane/work_slices.h"

#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <vector>

namespace partkeep {

class CLiveList {
public:
    // All are borrowed.
    CLiveList(CBrowserSession& session, CPartListModel& model, CPartListView& list, CListFollower& follower,
              CLiveTree& tree, CWorkSlices& work);

    void Start(); // at a paint
    void Stop();  // the library may go

private:
    void Look();
    bool Follow();
    void WatchSocket();
    [[nodiscard]] bool MayChange() const;
    [[nodiscard]] std::vector<PartId> LikelyNext() const;

    CBrowserSession& session_;
    CPartListModel& model_;
    CPartListView& list_;
    CListFollower& follower_;
    CLiveTree& tree_;
    CWorkSlices& work_;
    QTimer timer_;
    std::shared_ptr<IPartLibrary> library_; // that is watched
    std::unique_ptr<QSocketNotifier> notifier_;
    std::vector<PartId> asked_for_; // ahead
    int looks_ = 0;
    bool changed_ = false;
};

} // namespace partkeep
