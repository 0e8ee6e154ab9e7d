#include "partlibrary/sqlite/part_values.h"

#include "partlibrary/sqlite/library_rows.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace partkeep {

namespace {

constexpr qint64 moment_ms = 120;
constexpr qint64 few_rows = 20000;

class CValues {
public:
    CValues(CConnection& connection, PartColumn column, bool other_keys, std::size_t most)
        : connection_(connection), key_(KeyColumn(column, other_keys)),
          wanted_(part_row_columns + std::string(", ") + key_), column_(column), most_(most)
    {
    }

    bool OfParts(const std::vector<PartId>& ids)
    {
        const PartListView any;
        const CPartQuery query = CPartQuery(any, wanted_).Among(ids);
        CStatement rows(connection_,
                        query.Sql() + " GROUP BY " + key_ + " ORDER BY " + key_ + " LIMIT " + std::to_string(most_));
        bool sound = true;
        for (rows.WithAll(query.Values()); sound && rows.Next();) {
            sound = Take(rows).has_value();
        }
        return sound && !rows.Failed();
    }

    // From one value to the next by the index, however many parts have it.
    bool OfFolder(qint64 folder)
    {
        const std::string from = "SELECT " + wanted_ +
                                 " FROM part WHERE folder = ? "
                                 "AND part_is_sound(part.id, name, material, machine, comment) ";
        const std::string order = " ORDER BY " + key_ + ", name_key LIMIT 1";
        CStatement first(connection_, from + order);
        CStatement next(connection_, from + "AND " + key_ + " > ?" + order);
        CStatement* rows = &first.With(folder);
        while (found_.size() < most_ && rows->Next()) {
            const auto key = Take(*rows);
            if (!key) {
                return false;
            }
            rows = &next.WithAll({SqlValue(folder), *key});
        }
        return !rows->Failed();
    }

    std::vector<ColumnValue> InOrder()
    {
        const bool number = column_ == PartColumn::Thickness;
        const auto below = [number](const ColumnValue& a, const ColumnValue& b) {
            return number ? a.key.toLongLong() < b.key.toLongLong() : a.key < b.key;
        };
        std::stable_sort(found_.begin(), found_.end(), below);
        found_.erase(
            std::unique(found_.begin(), found_.end(), [](const auto& a, const auto& b) { return a.key == b.key; }),
            found_.end());
        return std::move(found_);
    }

private:
    // The value's key; nothing for a row that does not pass.
    std::optional<SqlValue> Take(const CStatement& statement)
    {
        PartRow row;
        if (ReadPartRow(statement, row) != RowFault::None) {
            connection_.SetProblem(DamagedRow(connection_));
            return std::nullopt;
        }
        if (column_ == PartColumn::Thickness) {
            const QString number = QString::number(row.thickness);
            found_.push_back({number, number.toUtf8()});
            return std::optional<SqlValue>(std::in_place, std::in_place_type<qint64>, row.thickness);
        }
        found_.push_back({TextOf(row), statement.Bytes(part_row_column_count)});
        return std::optional<SqlValue>(std::in_place, found_.back().key);
    }

    [[nodiscard]] const QString& TextOf(const PartRow& row) const
    {
        return column_ == PartColumn::Name       ? row.name
               : column_ == PartColumn::Material ? row.material
               : column_ == PartColumn::Machine  ? row.machine
                                                 : row.comment;
    }

    CConnection& connection_;
    std::string key_;
    std::string wanted_;
    PartColumn column_;
    std::size_t most_;
    std::vector<ColumnValue> found_;
};

std::optional<std::vector<qint64>> FolderIds(CConnection& connection, qint64 folder)
{
    if (folder != all_folders) {
        return std::vector{folder};
    }
    CStatement rows(connection, std::string("SELECT ") + folder_row_columns + " FROM folder WHERE parts > 0");
    std::vector<qint64> ids;
    for (FolderRow row; rows.Next();) {
        if (ReadFolderRow(rows, row) == RowFault::None) {
            ids.push_back(row.id);
        }
    }
    return rows.Failed() ? std::nullopt : std::optional(std::move(ids));
}

} // namespace

std::optional<std::vector<ColumnValue>> ReadValues(CConnection& connection, IPartListing& list, PartColumn column,
                                                   bool other_keys, std::size_t most)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < moment_ms && list.Count() <= few_rows && list.Step()) {
    }
    if (list.Failed()) { // else all values of the folder would be told
        return std::nullopt;
    }
    CValues values(connection, column, other_keys, most);
    if (list.Complete() && list.Count() <= few_rows) {
        return values.OfParts(list.Ids(0, list.Count())) ? std::optional(values.InOrder()) : std::nullopt;
    }
    const auto folders = FolderIds(connection, list.View().folder);
    bool read = folders.has_value() && !other_keys;
    for (std::size_t i = 0; read && i < folders->size() && timer.elapsed() < 3 * moment_ms; ++i) {
        read = values.OfFolder((*folders)[i]);
    }
    return read ? std::optional(values.InOrder()) : std::nullopt;
}

} // namespace partkeep
