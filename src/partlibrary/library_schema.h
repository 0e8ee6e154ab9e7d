// The tables of a part library. A library is one SQLite file per server, named after the server, with pages
// of 64 KB so that a file's content lies in few large pieces.
//
//   folder       one row a folder; row root_folder is the root, with the empty path
//   part         one row a part: attributes, the set of its file slots, and the stored keys by which a list is
//                sorted and searched. Every order that a list can have is an index that begins with the folder
//                and ends with name and id, so that a page of rows begins where the last one ended.
//   part_file    the content of files and pictures in pieces (file_chunks.h)
//   part_search  full-text index over pairs of characters (sort_text.h), without a copy of the text
#pragma once

#include <QString>

namespace partkeep {

class CLibraryConnection;

inline constexpr int library_version = 2;
inline constexpr qint64 root_folder = 1;

// Lays the tables out in an empty file.
bool CreateSchema(CLibraryConnection& connection);

// False, with the connection's problem set, unless the file is a library of this version and holds exactly
// the tables and indices of one: no view or trigger of a stranger's making is ever run.
bool CheckSchema(CLibraryConnection& connection);

} // namespace partkeep
