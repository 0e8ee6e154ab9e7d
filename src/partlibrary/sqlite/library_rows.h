// The gate: every row of a library passes here before anyone sees it. A row carries a sum over its values and the
// library's own salt, so that a damaged one, and one of another library that was copied over this one, is told; a name
// that an import would refuse is never let through, nor a value out of its range.
#pragma once

#include "partlibrary/library/part_library.h"

#include <QByteArray>

#include <optional>
#include <string>
#include <string_view>

namespace partkeep {

class CConnection;
class CStatement;

// XXH3 with 64 bits (the library xxhash) over numbers of eight bytes and texts behind their lengths. It finds
// accidents, not intent.
class CRowSum {
public:
    CRowSum(qint64 salt, char table) : bytes_(1, table) { Add(salt); }
    CRowSum& Add(qint64 number);
    CRowSum& Add(std::string_view bytes);
    [[nodiscard]] qint64 Sum() const;

private:
    std::string bytes_;
};

[[nodiscard]] qint64 FolderSum(qint64 salt, qint64 id, qint64 parent, std::string_view name, std::string_view path);
[[nodiscard]] qint64 PartSum(qint64 salt, const PartRow& row);
[[nodiscard]] qint64 FileSum(qint64 salt, qint64 id, qint64 content, qint64 bytes, std::string_view hash);

// A piece of content; its number is part of the sum, so that no piece is taken for another.
[[nodiscard]] qint64 PieceSum(qint64 salt, qint64 id, std::string_view content);

enum class RowFault { None, Refused, Damaged };

// What reads and checks rows from where a result has their columns first. The row counts only when there is no fault.
inline constexpr const char* folder_row_columns =
    "folder.id, folder.parent, folder.name, folder.path, folder.sum, folder.parts, "
    "EXISTS(SELECT 1 FROM folder child WHERE child.parent = folder.id)";
[[nodiscard]] RowFault ReadFolderRow(const CStatement& statement, FolderRow& row, int column = 0); // from there on

inline constexpr const char* part_row_columns = "part.id, part.folder, part.slots, part.thickness, part.name, "
                                                "part.material, part.machine, part.comment, part.sum";
inline constexpr int part_row_column_count = 9;
[[nodiscard]] RowFault ReadPartRow(const CStatement& statement, PartRow& row);

struct FileRow {
    FileSlot slot = FileSlot::Iga;
    qint64 content = 0;
    qint64 bytes = 0;
    QByteArray hash; // SHA-256 of the content
};
inline constexpr const char* file_row_columns = "id, content, bytes, hash, sum";
[[nodiscard]] RowFault ReadFileRow(const CStatement& statement, FileRow& row);

// What a damaged row of the library is told as.
[[nodiscard]] LibraryProblem DamagedRow(const CConnection& connection);

// Whether an import would take these texts of a part.
[[nodiscard]] bool IsSoundPart(QStringView name, QStringView material, QStringView machine, QStringView comment);

} // namespace partkeep
