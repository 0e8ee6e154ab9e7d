// Keeps a list up with what others change in its library, and has what the user is likely to look at next brought here:
// between events, never inside a call of the component, and not while anything is open that the list must stand still
// for.
#pragma once

#include "desktop/pane/list_follower.h"
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
              CWorkSlices& work);

    void Start(); // at a paint
    void Stop();  // the library may go

private:
    void Look();
    void WatchSocket();
    [[nodiscard]] bool MayChange() const;
    [[nodiscard]] std::vector<PartId> LikelyNext() const;

    CBrowserSession& session_;
    CPartListModel& model_;
    CPartListView& list_;
    CListFollower& follower_;
    CWorkSlices& work_;
    QTimer timer_;
    std::shared_ptr<IPartLibrary> library_; // that is watched
    std::unique_ptr<QSocketNotifier> notifier_;
    std::vector<PartId> asked_for_; // ahead
    int looks_ = 0;
    bool changed_ = false;
};

} // namespace partkeep
