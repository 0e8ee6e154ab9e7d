// Parts as a list shows them: the row of one, and what a view asks for.
#pragma once

#include "partlibrary/library/file_kinds.h"

#include <QString>

#include <cstdint>

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
};

struct PartAttributes {
    std::int32_t thickness = 0; // 1/10000
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

} // namespace partkeep
