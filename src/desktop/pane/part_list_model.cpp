#include "desktop/pane/part_list_model.h"

#include "desktop/pane/pane_places.h"

#include <QLocale>
#include <QPixmap>

#include <algorithm>

namespace partkeep {

namespace {

constexpr int page_rows = 64;
constexpr int cached_pages = 32;
constexpr int most_rows = 40'000'000; // a view's pixels are counted in 32 bits
constexpr double mm_per_inch = 25.4;

} // namespace

QString ThicknessText(std::int32_t thickness, DisplayUnit unit)
{
    const double mm = thickness / double{thickness_units};
    const QLocale locale = QLocale::c();
    return unit == DisplayUnit::Inch ? locale.toString(mm / mm_per_inch, 'f', 4) : locale.toString(mm, 'f', 2);
}

void CPartListModel::Clear()
{
    beginResetModel();
    pages_.reset();
    library_.reset();
    rows_ = 0;
    failed_ = false;
    cache_.clear();
    endResetModel();
}

void CPartListModel::Start(std::shared_ptr<IPartLibrary> library, const PartListView& view, qint64 parts_in_folder,
                           DisplayUnit unit, bool narrowed)
{
    auto pages = library->List(view, parts_in_folder, narrowed && library == library_ ? pages_.get() : nullptr);
    beginResetModel();
    pages_ = std::move(pages);
    library_ = std::move(library);
    unit_ = unit;
    rows_ = 0;
    failed_ = false;
    cache_.setMaxCost(cached_pages);
    cache_.clear();
    endResetModel();
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, part_columns - 1);
}

bool CPartListModel::Step()
{
    if (pages_ == nullptr || failed_) {
        return false;
    }
    const bool more = pages_->Step();
    ShowFound();
    if (pages_->Failed()) {
        Fail();
    }
    return more;
}

void CPartListModel::Finish()
{
    while (Step()) {
    }
}

void CPartListModel::ShowFound()
{
    const int found = static_cast<int>(std::min<qint64>(pages_->Count(), most_rows));
    if (found <= rows_) {
        return;
    }
    cache_.remove(rows_ / page_rows); // a page that was not full
    beginInsertRows({}, rows_, found - 1);
    rows_ = found;
    endInsertRows();
}

void CPartListModel::Fail() const
{
    if (!failed_) {
        failed_ = true;
        if (failure_) {
            failure_();
        }
    }
}

const PartRow* CPartListModel::Row(int row) const
{
    if (row < 0 || row >= rows_) {
        return nullptr;
    }
    const int number = row / page_rows;
    Page* page = cache_.object(number);
    if (page == nullptr && !failed_) {
        page = new Page(pages_->Rows(qint64{number} * page_rows, page_rows)); // the cache owns it
        const auto wanted = static_cast<std::size_t>(std::min(page_rows, rows_ - number * page_rows));
        cache_.insert(number, page);
        if (page->size() < wanted) {
            Fail();
        }
    }
    const auto place = static_cast<std::size_t>(row % page_rows);
    return page != nullptr && place < page->size() ? &(*page)[place] : nullptr;
}

std::vector<PartId> CPartListModel::Ids(qint64 first, qint64 count) const
{
    return pages_ != nullptr && !failed_ ? pages_->Ids(first, count) : std::vector<PartId>{};
}

std::optional<qint64> CPartListModel::RowOf(PartId part) const
{
    const auto row = pages_ != nullptr && !failed_ ? pages_->RowOf(part) : std::nullopt;
    return row && *row < rows_ ? row : std::nullopt;
}

void CPartListModel::PictureArrived(PartId part)
{
    if (const auto row = RowOf(part)) {
        const QModelIndex cell = index(static_cast<int>(*row), 0);
        Q_EMIT dataChanged(cell, cell, {Qt::DecorationRole});
    }
}

PartId CPartListModel::PartAt(int row) const
{
    const PartRow* part = Row(row);
    return part != nullptr ? part->id : 0;
}

QString CPartListModel::FolderText(const PartRow& row) const
{
    return ShowsAllFolders() ? PlaceText({server_, row.folder_path}) : QString();
}

QString CPartListModel::CellText(const PartRow& row, PartColumn column) const
{
    switch (column) {
    case PartColumn::Name:
        return row.name.isEmpty() ? PaneString(PaneText::PartGone, language_) : row.name;
    case PartColumn::Thickness:
        return row.name.isEmpty() ? QString() : ThicknessText(row.thickness, unit_);
    case PartColumn::Material:
        return row.material;
    case PartColumn::Machine:
        return row.machine;
    case PartColumn::Comment:
        return row.comment;
    }
    return {};
}

QString CPartListModel::HeaderText(PartColumn column) const
{
    switch (column) {
    case PartColumn::Name:
        return PaneString(PaneText::Name, language_);
    case PartColumn::Thickness:
        return PaneString(unit_ == DisplayUnit::Inch ? PaneText::ThicknessInch : PaneText::ThicknessMetric, language_);
    case PartColumn::Material:
        return PaneString(PaneText::Material, language_);
    case PartColumn::Machine:
        return PaneString(PaneText::Machine, language_);
    case PartColumn::Comment:
        return PaneString(PaneText::Comment, language_);
    }
    return {};
}

int CPartListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : rows_;
}

int CPartListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : part_columns;
}

QVariant CPartListModel::data(const QModelIndex& index, int role) const
{
    const auto column = static_cast<PartColumn>(index.column());
    if (role == Qt::TextAlignmentRole && column == PartColumn::Thickness) {
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    }
    const bool text = role == Qt::DisplayRole || role == Qt::ToolTipRole || role == Qt::AccessibleTextRole;
    const bool of_name = role == Qt::DecorationRole || role == part_role || role == folder_role;
    const PartRow* row = text || (of_name && column == PartColumn::Name) ? Row(index.row()) : nullptr;
    return row != nullptr ? RowData(*row, column, role) : QVariant();
}

QVariant CPartListModel::RowData(const PartRow& row, PartColumn column, int role) const
{
    switch (role) {
    case part_role:
        return row.id;
    case folder_role:
        return FolderText(row);
    case Qt::DecorationRole:
        return pictures_ ? pictures_(row) : QPixmap();
    case Qt::AccessibleTextRole:
        return column == PartColumn::Name && ShowsAllFolders()
                   ? PaneString(PaneText::InFolder, language_).arg(CellText(row, column), FolderText(row))
                   : CellText(row, column);
    default:
        return CellText(row, column);
    }
}

QVariant CPartListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal) {
        return {};
    }
    const auto column = static_cast<PartColumn>(section);
    if (role == Qt::TextAlignmentRole) {
        const Qt::Alignment side = column == PartColumn::Thickness ? Qt::AlignRight : Qt::AlignLeft;
        return static_cast<int>(side | Qt::AlignVCenter);
    }
    return role == Qt::DisplayRole ? QVariant(HeaderText(column)) : QVariant();
}

} // namespace partkeep
