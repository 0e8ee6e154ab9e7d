#include "desktop/pane/column_menu.h"

#include "desktop/finger.h"
#include "desktop/readable_colours.h"

#include <QActionGroup>
#include <QApplication>
#include <QHeaderView>

#include <algorithm>
#include <iterator>

namespace partkeep {

namespace {

constexpr int width_step = 24;
constexpr int entry_side = 28; // by a mouse, in logical pixels

void Resize(QHeaderView& header, int column, int by)
{
    header.resizeSection(column, std::max(smallest_column, header.sectionSize(column) + by));
}

// Hidden columns have places too; a move that passes only them would show nothing.
int PlaceBeside(const QHeaderView& header, int column, int step)
{
    int place = header.visualIndex(column) + step;
    while (place >= 0 && place < header.count() && header.isSectionHidden(header.logicalIndex(place))) {
        place += step;
    }
    return place;
}

void AddMove(QMenu& menu, const ColumnMenuState& state, PaneText text, int step)
{
    QHeaderView& header = state.header;
    const int from = header.visualIndex(state.column);
    const int to = PlaceBeside(header, state.column, step);
    QAction* action = menu.addAction(PaneString(text, state.language), &header,
                                     [&header, from, to] { header.moveSection(from, to); });
    action->setEnabled(to >= 0 && to < header.count());
}

void AddColumnEntries(QMenu& menu, const ColumnMenuState& state)
{
    QHeaderView& header = state.header;
    const int column = state.column;
    const auto text = [&state](PaneText which) { return PaneString(which, state.language); };
    AddMenuTitle(menu, header.model()->headerData(column, Qt::Horizontal).toString());
    const auto sort = state.sort;
    menu.addAction(text(PaneText::SortUp), [sort, column] { sort(column, Qt::AscendingOrder); });
    menu.addAction(text(PaneText::SortDown), [sort, column] { sort(column, Qt::DescendingOrder); });
    AddMove(menu, state, PaneText::MoveLeft, -1);
    AddMove(menu, state, PaneText::MoveRight, 1);
    menu.addAction(text(PaneText::Wider), &header, [&header, column] { Resize(header, column, width_step); });
    menu.addAction(text(PaneText::Narrower), &header, [&header, column] { Resize(header, column, -width_step); });
}

void AddChoice(QMenu& menu, const ColumnMenuState& state, int column)
{
    QHeaderView& header = state.header;
    QAction* action = menu.addAction(header.model()->headerData(column, Qt::Horizontal).toString());
    action->setCheckable(true);
    action->setChecked(!header.isSectionHidden(column));
    action->setEnabled(header.isSectionHidden(column) || header.count() - header.hiddenSectionCount() > 1);
    QObject::connect(action, &QAction::toggled, &header,
                     [&header, column](bool shown) { header.setSectionHidden(column, !shown); });
}

void AddPictureSizes(QMenu& menu, const ColumnMenuState& state)
{
    constexpr PaneText names[] = {PaneText::NoPictures, PaneText::SmallPictures, PaneText::MediumPictures,
                                  PaneText::LargePictures};
    auto* group = new QActionGroup(&menu);
    for (std::size_t size = 0; size < std::size(names); ++size) {
        QAction* action = menu.addAction(PaneString(names[size], state.language));
        action->setCheckable(true);
        action->setChecked(static_cast<PictureSize>(size) == state.pictures);
        group->addAction(action);
        QObject::connect(action, &QAction::triggered, &menu,
                         [show = state.show_pictures, size] { show(static_cast<PictureSize>(size)); });
    }
}

} // namespace

void StyleMenu(QMenu& menu, const QString& name)
{
    menu.setAccessibleName(name);
    const QPalette theme = QApplication::palette();
    const QColor faint = FaintText(theme.color(QPalette::WindowText), theme.color(QPalette::Window));
    const QColor selected = ReadableColours(theme).color(QPalette::Highlight); // a style sheet sees the theme's own
    const int room = (FingerSide(entry_side) - menu.fontMetrics().height() + 1) / 2;
    menu.setStyleSheet(QStringLiteral("QMenu::item { padding: %2px 16px %2px 28px; } QMenu::indicator { left: 8px; }"
                                      "QMenu::item:selected { background: %3; color: palette(highlighted-text); }"
                                      "QMenu::item:disabled { color: %1; background: transparent; }"
                                      "QMenu::separator { height: 1px; background: palette(mid); }")
                           .arg(faint.name())
                           .arg(std::max(room, 0))
                           .arg(selected.name()));
}

void AddMenuTitle(QMenu& menu, const QString& text)
{
    if (!menu.isEmpty()) {
        menu.addSeparator();
    }
    QAction* title = menu.addAction(text);
    title->setEnabled(false);
    QFont font = title->font();
    font.setBold(true);
    title->setFont(font);
}

void FillColumnMenu(QMenu& menu, const ColumnMenuState& state)
{
    if (state.column >= 0) {
        AddColumnEntries(menu, state);
    }
    AddMenuTitle(menu, PaneString(PaneText::Columns, state.language));
    for (int column = 0; column < state.header.count(); ++column) {
        AddChoice(menu, state, column);
    }
    AddMenuTitle(menu, PaneString(PaneText::Thumbnails, state.language));
    AddPictureSizes(menu, state);
    AddMenuTitle(menu, PaneString(PaneText::Servers, state.language));
    menu.addAction(PaneString(PaneText::WiderTree, state.language), [widen = state.widen_tree] { widen(width_step); });
    menu.addAction(PaneString(PaneText::NarrowerTree, state.language),
                   [widen = state.widen_tree] { widen(-width_step); });
}

} // namespace partkeep
