// The table of attributes that goes with an import: comma-separated text (RFC 4180) in UTF-8 with a header
// line. Columns, in any order and in any letter case: `part`, and if wanted `folder`, `thickness`, `material`,
// `machine`, `comment`, `files`; any other column is an error, since it is more likely a slip than meant to be lost.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/library/part_list.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <string>
#include <vector>

namespace partkeep {

struct AttributeRow {
    int line = 0;
    QString folder; // relative to the folder that is imported
    QString part;   // empty for a line that stands for the folder alone
    PartAttributes attributes;
    std::optional<qsizetype> files; // how many the part has, where the table tells
};

struct AttributeTable {
    QStringList columns; // in small letters
    std::vector<AttributeRow> rows;
};

// Nothing on an error, with a line number in the subject.
[[nodiscard]] std::optional<AttributeTable> ParseAttributeTable(const QByteArray& text, LibraryProblem& problem);

// The same of a file, by its native path, which then stands in front of the line number.
[[nodiscard]] std::optional<AttributeTable> ReadAttributeTable(const QString& file, LibraryProblem& problem);

// Fields as one line of a table.
[[nodiscard]] std::string TableLine(const QStringList& fields);

// A decimal number such as "1.5" or "-0.0001" in units of 1/10000. Nothing when it is no number, has more
// than four decimals or does not fit.
[[nodiscard]] std::optional<std::int32_t> ParseThickness(QStringView text);

} // namespace partkeep
