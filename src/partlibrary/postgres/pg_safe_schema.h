// Whether code of somebody's own could run where the tables of a schema are read or changed. Whoever may make a schema
// makes in it what they like: a view in place of a table, with a function that runs by the rights of whoever looks; or
// a function of a name that statements here use, for values that it fits better than the server's own. So nothing in a
// schema is touched, nor any name looked up there, before the server's catalogue has told that its tables are tables.
#pragma once

#include "partlibrary/postgres/sql.h"

#include <QString>

namespace partkeep {

// Where names are looked up until then.
inline constexpr SqlText pg_catalogue_path = "pg_catalog, pg_temp";

// Has names looked up in the schema from then on, where nothing is unsafe; else all is as it was, and its tables are
// not found. To be sent while names are looked up in the catalogue.
[[nodiscard]] CSql EnterPgSchema(const QString& schema);

// A row, with its reason, for each thing there that is unsafe. For such a moment, too.
[[nodiscard]] CSql UnsafeInPgSchema(const QString& schema);

} // namespace partkeep
