// The menu by which columns are sorted, moved, sized and chosen, for whoever has no mouse at hand.
#pragma once

#include "desktop/pane/pane_texts.h"
#include "partlibrary/session/view_state.h"

#include <QMenu>
#include <QString>

#include <functional>

class QHeaderView;

namespace partkeep {

inline constexpr int smallest_column = 40; // pixels, however a column came to its width

struct ColumnMenuState {
    QHeaderView& header;
    int column; // logical; negative: only the choice of columns
    PaneLanguage language;
    PictureSize pictures;
    std::function<void(int column, Qt::SortOrder order)> sort;
    std::function<void(PictureSize size)> show_pictures;
    std::function<void(int by)> widen_tree;
};

// Entries that a finger can tell apart, in the colours of the palette; and what a screen reader calls the menu.
void StyleMenu(QMenu& menu, const QString& name);

// A heading for the entries that follow. The toolkit's own sections lose their text to a style.
void AddMenuTitle(QMenu& menu, const QString& text);

// Fills the menu; the last shown column cannot be hidden.
void FillColumnMenu(QMenu& menu, const ColumnMenuState& state);

} // namespace partkeep
