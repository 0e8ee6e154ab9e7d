// Statements about the rows that a view shows, put together piece by piece: a list that is read by pages, by row
// number or whole means the same rows in the same order.
#pragma once

#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/server_folders.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace partkeep {

// Where a row stands in the order of a view.
struct PartPosition {
    qint64 folder = 0;   // not used in the list of one folder
    SqlValue column_key; // not used when sorted by name
    QByteArray name_key;
    PartId id = 0;
};

// What a view asks of its rows beyond their folder.
struct ShownRows {
    QStringList words;                             // of its search
    std::shared_ptr<const CServerFolders> folders; // in a view of all folders
    bool other_keys = false;                       // those that are stored are not believed
};

// A column as it is shown, and its key: as it is stored, or made from the text where stored keys are not believed.
[[nodiscard]] const char* TextColumn(PartColumn column);
[[nodiscard]] std::string KeyColumn(PartColumn column, bool other_keys = false);

// The columns that a row's place in the order is made of, and what reads them from `column` on.
[[nodiscard]] std::string PositionColumns(PartColumn sort, bool other_keys = false);
[[nodiscard]] PartPosition ReadPosition(const CStatement& statement, int column, PartColumn sort);

// Whether one place comes before another in the order of the view.
[[nodiscard]] bool Precedes(const PartListView& view, const PartPosition& left, const PartPosition& right);

class CPartQuery {
public:
    CPartQuery(const PartListView& view, const std::string& columns);

    // Where the rows come from; one of these is called first. All keep to the view's folder, if it has one.
    CPartQuery& Folder();
    CPartQuery& Among(const std::vector<PartId>& ids); // "wanted.key" is then a row's number in `ids`
    CPartQuery& One(PartId part);

    // The view's filter, the words of its search, and the gate for what is only counted.
    CPartQuery& Shown(const ShownRows& rows);

    // Where they lie in the view's order. Nothing stands for its start or its end.
    CPartQuery& Beyond(const std::optional<PartPosition>& position);
    CPartQuery& UpTo(const std::optional<PartPosition>& position);

    CPartQuery& Ordered();
    CPartQuery& AsGiven(); // in the order of the ids
    CPartQuery& Part(qint64 offset, qint64 limit);

    [[nodiscard]] const std::string& Sql() const { return sql_; }
    [[nodiscard]] const std::vector<SqlValue>& Values() const { return values_; }

private:
    void InFolder(const char* column);
    CPartQuery& Compare(const std::optional<PartPosition>& position, const char* sign);

    const PartListView& view_;
    std::string sql_;
    std::vector<SqlValue> values_;
};

// A query that runs.
class CPartResult : public CStatement {
public:
    CPartResult(CConnection& connection, const CPartQuery& query) : CStatement(connection, query.Sql())
    {
        WithAll(query.Values());
    }
};

} // namespace partkeep
