// What can be done with the rows of the part list.
#pragma once

#include "desktop/pane/pane_texts.h"

#include <QMenu>

#include <functional>

namespace partkeep {

struct RowMenuState {
    PaneLanguage language;
    bool selected; // the current row
    std::function<void()> toggle;
    std::function<void()> copy_names;
    std::function<void()> open_folder; // empty: the list is that folder's
    std::function<void()> export_selection;
};

// An entry whose action is empty is there and disabled.
void FillRowMenu(QMenu& menu, const RowMenuState& state);

} // namespace partkeep
