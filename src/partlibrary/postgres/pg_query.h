// Statements about the rows that a view shows, put together from pieces.
#pragma once

#include "partlibrary/postgres/pg_rows.h"
#include "partlibrary/postgres/sql.h"

#include <QStringList>

#include <optional>
#include <span>

namespace partkeep {

// Where a row stands in the order of a view: the bytes of its keys, of which a view uses some.
struct PgPosition {
    qint64 folder = 0;
    qint64 thickness = 0;
    QByteArray column_key;
    QByteArray name_key;
    PartId id = 0;
};

// A column as it is shown, and as it is ordered.
[[nodiscard]] SqlText PgTextColumn(PartColumn column);
[[nodiscard]] SqlText PgKeyColumn(PartColumn column);

// What a list reads of a part: its row, the path of its folder where the list is of all of them.
void AddPartColumns(CSql& sql, const PartListView& view);

// Conditions: the view's folder; behind a position; what filter, values and words ask for. With keys of other rules
// only the filter counts.
void AddFolder(CSql& sql, const PartListView& view);
void AddBehind(CSql& sql, const PartListView& view, const PgPosition& position);
void AddShown(CSql& sql, const PartListView& view, const QStringList& words, bool other_keys);

void AddOrder(CSql& sql, const PartListView& view);
[[nodiscard]] bool Precedes(const PartListView& view, const PgPosition& left, const PgPosition& right);

} // namespace partkeep
