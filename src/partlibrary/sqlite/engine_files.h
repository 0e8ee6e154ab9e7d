// The files that the engine may have.
#pragma once

namespace partkeep {

// The name under which sqlite3_open_v2 finds the system's files (https://www.sqlite.org/vfs.html), but for
// what would be in the hands of whoever made a library:
//
// - the journal of a change in several libraries, which a journal tells by its path and the engine deletes after it has
//   looked into it. Ours never have one.
// - memory that is shared or mapped: a write-ahead log needs it, and whoever cuts such a file short ends the process;
// - a pipe, a device or a folder in place of a file: opening it could wait for ever.
//
// What needs one of these cannot be opened (SQLITE_CANTOPEN). Where there is no memory, nothing is found by the name.
// May be called in any thread.
[[nodiscard]] const char* EngineFiles();

} // namespace partkeep
