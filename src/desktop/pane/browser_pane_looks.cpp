// What the pane looks like, and what of it is kept between runs.
#include "desktop/pane/browser_pane.h"

#include "desktop/finger.h"
#include "desktop/pane/column_menu.h"
#include "desktop/pane/part_row_delegate.h"

#include <QHeaderView>
#include <QSplitter>

#include <algorithm>
#include <array>
#include <limits>

namespace partkeep {

namespace {

constexpr int picture_room = 6; // above and below a picture
constexpr int text_room = 12;   // the same for text
constexpr int lowest_row = 32;  // by a mouse
constexpr int largest_column = 4000;
constexpr int name_characters = 12;                         // that show beside a picture, its margins included
constexpr std::array<int, 4> picture_sides{0, 32, 64, 128}; // by PictureSize

std::int16_t ToInt16(int value)
{
    return static_cast<std::int16_t>(std::clamp<int>(value, 0, std::numeric_limits<std::int16_t>::max()));
}

} // namespace

void CBrowserPane::ShowPictures(PictureSize size)
{
    pictures_size_ = size;
    delegate_->SetPictureSide(picture_sides[static_cast<std::size_t>(size)]);
    SetRowHeight();
    // A large picture must not take the room of the name beside it.
    QHeaderView& header = list_->Header();
    const int name = static_cast<int>(PartColumn::Name);
    const int room = delegate_->PictureSide() + name_characters * fontMetrics().averageCharWidth();
    if (!header.isSectionHidden(name) && header.sectionSize(name) < room) {
        header.resizeSection(name, room);
    }
}

void CBrowserPane::WidenTree(int by)
{
    const QList<int> sizes = splitter_->sizes();
    splitter_->setSizes({sizes.front() + by, sizes.back() - by});
}

// The rows of results have two lines of text.
void CBrowserPane::SetRowHeight()
{
    const int lines = session_->ShowsResults() ? 2 : 1;
    list_->SetRowHeight(std::max({delegate_->PictureSide() + picture_room, FingerSide(lowest_row),
                                  lines * fontMetrics().height() + text_room / lines}));
}

void CBrowserPane::ApplyViewState(const ViewState& state)
{
    QHeaderView& header = list_->Header();
    if (state.tree_width > 0) {
        splitter_->setSizes({state.tree_width, std::max(1, splitter_->width() - state.tree_width)});
    }
    int place = 0;
    for (const ViewColumn& column : state.columns) {
        if (column.id < 0 || column.id >= part_columns) {
            continue;
        }
        header.moveSection(header.visualIndex(column.id), place++);
        if (column.width > 0) {
            header.resizeSection(column.id, std::clamp<int>(column.width, smallest_column, largest_column));
        }
        header.setSectionHidden(column.id, !column.visible);
    }
    if (header.hiddenSectionCount() == header.count()) {
        header.showSection(static_cast<int>(PartColumn::Name));
    }
    ShowPictures(state.pictures);
}

void CBrowserPane::CaptureViewState(ViewState& state)
{
    const QHeaderView& header = list_->Header();
    state.tree_width = ToInt16(splitter_->sizes().front());
    state.pictures = pictures_size_;
    for (int place = 0; place < part_columns; ++place) {
        const int column = header.logicalIndex(place);
        const bool hidden = header.isSectionHidden(column);
        state.columns[static_cast<std::size_t>(place)] = {ToInt16(column),
                                                          ToInt16(hidden ? 0 : header.sectionSize(column)), !hidden};
    }
}

} // namespace partkeep
