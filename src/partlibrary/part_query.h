// Statements about the rows that a view shows, put together piece by piece: a list that is read by pages, by row
// number or whole means the same rows in the same order.
#pragma once

#include "partlibrary/part_list.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <vector>

namespace partkeep {

class CLibraryConnection;
class CStatement;

// The columns of a PartRow, and what reads them from where a result has them first.
inline const QString part_row_columns =
    QStringLiteral("part.id, folder, slots, thickness, name, material, machine, comment");
inline constexpr int part_row_column_count = 8;
[[nodiscard]] PartRow ReadPartRow(const CStatement& statement);

// The columns that a row's place in the order is made of, and what reads them from `column` on.
[[nodiscard]] QString PositionColumns(PartColumn sort);
[[nodiscard]] PartPosition ReadPosition(const CStatement& statement, int column);

// Whether one place comes before another in the order of the view.
[[nodiscard]] bool Precedes(const PartListView& view, const PartPosition& left, const PartPosition& right);

class CPartQuery {
public:
    CPartQuery(const PartListView& view, const QString& columns);

    // Where the rows come from; one of these is called first. All keep to the view's folder.
    CPartQuery& Folder();
    CPartQuery& Among(const std::vector<PartId>& ids); // "wanted.key" is then a row's number in `ids`
    CPartQuery& Found(const QStringList& words);       // by the search index; to be compared once more by Shown
    CPartQuery& One(PartId part);

    // The view's filter, and the words of its search.
    CPartQuery& Shown(const QStringList& words);

    // Where they lie in the view's order. Nothing stands for its start or its end.
    CPartQuery& Beyond(const std::optional<PartPosition>& position);
    CPartQuery& UpTo(const std::optional<PartPosition>& position);

    CPartQuery& Ordered();
    CPartQuery& Part(qint64 offset, qint64 limit);

    [[nodiscard]] CStatement Run(CLibraryConnection& connection) const;

private:
    CPartQuery& Compare(const std::optional<PartPosition>& position, const char* sign);

    const PartListView& view_;
    QString sql_;
    QVariantList values_;
};

} // namespace partkeep
