#include "desktop/pane/live_tree.h"

#include <QScrollBar>

#include <algorithm>

namespace partkeep {

// One that waits for its turn keeps it, lest the last ones never have theirs.
void CLiveTree::Change()
{
    AddBranches(model_.Find(session_.CurrentServer(), {}));
}

void CLiveTree::AddBranches(const QModelIndex& branch)
{
    if (!model_.IsRead(branch)) {
        return;
    }
    if (std::find(stale_.begin(), stale_.end(), branch) == stale_.end()) {
        stale_.emplace_back(branch);
    }
    for (int row = 0; row < model_.rowCount(branch); ++row) {
        AddBranches(model_.index(row, 0, branch));
    }
}

void CLiveTree::Step()
{
    const QPersistentModelIndex branch = stale_.front();
    stale_.pop_front();
    const bool shown = branch.isValid() && CServerTreeModel::ServerOf(branch) == session_.CurrentServer();
    if (const auto rows =
            shown ? session_.Folders(session_.CurrentServer(), CServerTreeModel::FolderOf(branch)) : std::nullopt) {
        Show(branch, *rows);
    }
}

// What stands at the top stays there. A folder that has gone and was the current one has taken the mark with it.
void CLiveTree::Show(const QModelIndex& branch, const std::vector<FolderRow>& rows)
{
    const QPersistentModelIndex top = tree_.indexAt({0, 0});
    const int before = tree_.visualRect(top).top();
    if (!model_.Update(branch, rows)) {
        return;
    }
    tree_.doItemsLayout(); // which of them have a branch, too
    if (top.isValid()) {
        QScrollBar& bar = *tree_.verticalScrollBar();
        bar.setValue(bar.value() + tree_.visualRect(top).top() - before);
    }
    const QModelIndex place = model_.Find(session_.CurrentServer(), session_.CurrentFolder().path);
    if (tree_.currentIndex() != place) {
        tree_.setCurrentIndex(place);
    }
}

} // namespace partkeep
