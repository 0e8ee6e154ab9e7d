// Parts as a list shows them: the row of one, and what a view asks for.
#pragma once

#include "partlibrary/library/file_kinds.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <map>

namespace partkeep {

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
    QString folder_path{}; // only in a list of all folders
};

struct PartAttributes {
    std::int32_t thickness = 0; // 1/10000
    QString material;
    QString machine;
    QString comment;

    friend bool operator==(const PartAttributes&, const PartAttributes&) = default;
};

enum class PartColumn : std::uint8_t { Name, Thickness, Material, Machine, Comment };

// What parts have in common in one column. The key is the library's own: values that differ only in their spelling
// share it.
struct ColumnValue {
    QString text; // of a thickness: its number
    QByteArray key;

    friend bool operator==(const ColumnValue&, const ColumnValue&) = default;
};

inline constexpr qint64 all_folders = 0;

struct PartListView {
    qint64 folder = all_folders; // a list of all of them goes folder by folder, each in the order of the view
    std::int16_t filter = -1;    // kind mask: parts with at least one file of it; -1 shows all
    QString search;              // as typed
    PartColumn sort = PartColumn::Name;
    bool descending = false;
    std::map<PartColumn, ColumnValue> only{}; // of thickness, material and machine

    friend bool operator==(const PartListView&, const PartListView&) = default;
};

} // namespace partkeep
