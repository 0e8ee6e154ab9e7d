// The tables of a part library. A library is one SQLite file per server, named after the server, with pages of 64 KB
// so that a file's content lies in few large pieces.
//
//   library      one row: which library it is, whose keys it holds, and the numbers to be given next
//   folder       one row a folder; row root_folder is the root, with the empty path
//   part         one row a part: attributes, the set of its file slots, and the stored keys by which a list is sorted
//                and searched. Every order that a list can have is an index that begins with the folder and ends with
//                name and id, so that a page of rows begins where the last one ended.
//   part_file    one row a file or picture, by part * slots_per_part + slot: where its content lies, how long it is,
//                and its SHA-256
//   piece        content in pieces, by content * pieces_per_content + number; all but the last of a content have
//                piece_bytes. An empty content has none.
//   part_search  full-text index over pairs of characters (sort_text.h), without a copy of the text
//
// The column `sum` holds a row's sum (library_rows.h).
#pragma once

#include <QByteArray>
#include <QString>

struct sqlite3;

namespace partkeep {

class CConnection;

inline constexpr int library_version = 4;
inline constexpr qint64 root_folder = 1;
inline constexpr int page_bytes = 65536;

inline constexpr qint64 slots_per_part = 16;
inline constexpr qint64 pieces_per_content = 65536;
inline constexpr qint64 max_part_id = qint64{1} << 40;
inline constexpr qint64 max_content_id = qint64{1} << 44;

// The largest multiple of 64 that a leaf page holds beside the row's other values.
inline constexpr qsizetype piece_bytes = 65408;
inline constexpr qint64 max_file_bytes = pieces_per_content * piece_bytes;

// Lays the tables out in an empty file.
bool CreateSchema(CConnection& connection);

// False, with the connection's problem set, unless the file is a library of this version and holds exactly the tables
// and indices of one: no view or trigger of a stranger's making is ever run.
bool CheckSchema(CConnection& connection);

// The function part_is_sound(id, name, material, machine, comment), which is the gate for rows that are only counted:
// it tells the connection of those that are not. And sort_key(text) and search_text_of(name, material, machine,
// comment), for rows whose stored ones are by other rules.
bool AddRowFunctions(CConnection& connection, sqlite3* database);

// What tells a library from all others, as it stands in its first page. Empty for another page.
[[nodiscard]] QByteArray LibraryMark(const QByteArray& page);

} // namespace partkeep
