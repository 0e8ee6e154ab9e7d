#include "desktop/pane/row_menu.h"

#include <QKeySequence>

namespace partkeep {

void FillRowMenu(QMenu& menu, const RowMenuState& state)
{
    const auto add = [&](PaneText text, const std::function<void()>& action) {
        QAction* entry = menu.addAction(PaneString(text, state.language));
        entry->setEnabled(static_cast<bool>(action));
        if (action) {
            QObject::connect(entry, &QAction::triggered, &menu, action);
        }
        return entry;
    };
    add(state.selected ? PaneText::Unselect : PaneText::SelectToo, state.toggle);
    QAction* copy = add(PaneText::CopyNames, state.copy_names);
    copy->setShortcut(Qt::CTRL | Qt::Key_C);
    copy->setShortcutVisibleInContextMenu(true);
    add(PaneText::OpenFolder, state.open_folder);
    add(PaneText::ExportSelection, state.export_selection);
}

} // namespace partkeep
