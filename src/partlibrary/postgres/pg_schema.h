// The tables of a part library in a database: a schema named as the server is.
//
//   partkeep_library  one row: version, which library it is, whose keys it holds, how often it was changed, and the
//                     numbers to be given next. Who changes the library locks it.
//   folder            one row a folder; row 1 is the root, with the empty path
//   part              one row a part: as in the file format, with the pairs of characters of its search text, and who
//                     changed it when
//   part_file         one row a file or picture: which content it has, how long it is, and its SHA-256
//   piece             content in pieces of postgres_piece_bytes, outside of the table's pages where one is too small
//   pair              how many parts have a pair of characters
//
// Names and texts compare by their bytes; keys are those of sort_text.h. Every order of a list is an index that begins
// with the folder and ends with the id.
#pragma once

#include "partlibrary/postgres/pg_connection.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace partkeep {

inline constexpr qint64 postgres_root_folder = 1;
inline constexpr qint64 postgres_piece_bytes = 262144;
inline constexpr qint64 postgres_max_file_bytes = qint64{4} << 30;

// Makes schema, tables, rights and indexes in one transaction. `connection` is for PgUse::Administer.
bool CreatePgSchema(CPgConnection& connection, LibraryProblem& problem);

// The codes of what a search looks for in folded text: each pair of neighbouring characters, and each single one
// beyond ASCII. Different pairs may share a code.
[[nodiscard]] std::vector<std::int32_t> PairCodes(const QString& folded);
// Those that the words must have; none for a word of one character of ASCII.
[[nodiscard]] std::vector<std::int32_t> WordCodes(const QStringList& words);

} // namespace partkeep
