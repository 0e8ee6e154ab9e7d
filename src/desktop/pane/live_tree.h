// Keeps the folders of the library that is shown up with what others change, a branch of the tree at a time. What was
// never opened is read when it is.
#pragma once

#include "desktop/pane/pane_widgets.h"
#include "desktop/pane/server_tree_model.h"
#include "partlibrary/session/browser_session.h"

#include <QPersistentModelIndex>

#include <deque>

namespace partkeep {

class CLiveTree {
public:
    // All are borrowed.
    CLiveTree(CBrowserSession& session, CServerTreeModel& model, CServerTree& tree)
        : session_(session), model_(model), tree_(tree)
    {
    }

    void Change(); // all that is known of the library's folders may be out of date
    void Forget() { stale_.clear(); }
    [[nodiscard]] bool HasWork() const { return !stale_.empty(); }
    void Step(); // reads one branch
    [[nodiscard]] bool Pressed() const { return tree_.Pressed(); }

private:
    void AddBranches(const QModelIndex& branch);
    void Show(const QModelIndex& branch, const std::vector<FolderRow>& rows);

    CBrowserSession& session_;
    CServerTreeModel& model_;
    CServerTree& tree_;
    std::deque<QPersistentModelIndex> stale_;
};

} // namespace partkeep
