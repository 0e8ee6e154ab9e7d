// The table of attributes that goes with an import: comma-separated text (RFC 4180) in UTF-8 with a header
// line. Columns, in any order and in any letter case: `part`, and if wanted `folder`, `thickness`, `material`,
// `machine`, `comment`; any other column is an error, since it is more likely a slip than meant to be lost.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/library/part_list.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace partkeep {

struct AttributeRow {
    int line = 0;
    QString folder; // relative to the folder that is imported
    QString part;
    PartAttributes attributes;
};

// Nothing on an error, with a line number in the reason.
[[nodiscard]] std::optional<std::vector<AttributeRow>> ParseAttributeTable(const QByteArray& text,
                                                                           LibraryProblem& problem);

// A decimal number such as "1.5" or "-0.0001" in units of 1/10000. Nothing when it is no number, has more
// than four decimals or does not fit.
[[nodiscard]] std::optional<std::int32_t> ParseThickness(QStringView text);

} // namespace partkeep
