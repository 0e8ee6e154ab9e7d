// A folder's parts as a list shows them: filter, search and order, read page by page. The rows of a page come
// straight from an index; nothing here grows with the folder but the lists of ids.
#pragma once

#include "partlibrary/file_kinds.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <optional>
#include <vector>

namespace partkeep {

class CLibraryConnection;
class CPartQuery;

using PartId = qint64;

struct PartRow {
    PartId id = 0;
    qint64 folder = 0;
    SlotSet slots = 0;
    std::int32_t thickness = 0; // 1/10000
    QString name;
    QString material;
    QString machine;
    QString comment;
};

enum class PartColumn : std::uint8_t { Name, Thickness, Material, Machine, Comment };

struct PartListView {
    qint64 folder = 0;
    std::int16_t filter = -1; // kind mask: parts with at least one file of it; -1 shows all
    QString search;           // as typed
    PartColumn sort = PartColumn::Name;
    bool descending = false;

    friend bool operator==(const PartListView&, const PartListView&) = default;
};

// Where a row stands in the order of a view.
struct PartPosition {
    QVariant column_key; // not used when sorted by name
    QByteArray name_key;
    PartId id = 0;
};

struct PartPage {
    std::vector<PartRow> rows;
    std::vector<PartPosition> positions; // of each row
};

class CPartList {
public:
    explicit CPartList(CLibraryConnection& connection) : connection_(connection) {}

    // At most `limit` rows behind `after`, or from the start. Nothing on an error.
    [[nodiscard]] std::optional<PartPage> Page(const PartListView& view, const std::optional<PartPosition>& after,
                                               int limit);

    // All ids in the order of the view. Nothing on an error.
    [[nodiscard]] std::optional<std::vector<PartId>> Ids(const PartListView& view);

    // Those of `ids` that the view shows, in its order. Nothing on an error.
    [[nodiscard]] std::optional<std::vector<PartId>> Visible(const PartListView& view, const std::vector<PartId>& ids);

private:
    [[nodiscard]] CPartQuery Begin(const PartListView& view, const QString& columns);
    [[nodiscard]] bool UseSearchIndex(const PartListView& view, const QStringList& words);

    CLibraryConnection& connection_;
};

} // namespace partkeep
