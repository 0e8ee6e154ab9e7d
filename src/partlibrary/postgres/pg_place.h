// Where libraries in databases are, and what opens one to read: all that who shows them need know of this engine.
#pragma once

#include "partlibrary/cache/content_cache.h"
#include "partlibrary/library/part_library.h"

#include <QString>

#include <memory>
#include <optional>

namespace partkeep {

// A service of the client library's service file, and the schema in the database that it leads to.
struct PgPlace {
    QString service;
    QString server; // empty: none, only to ask which there are

    [[nodiscard]] QString Text() const { return service + u':' + server; }
};

// Whether the database can have a schema of this name, and finds it by that: it would cut a long one, and takes "$user"
// for the user's own.
[[nodiscard]] bool IsSchemaName(const QString& server);

// "SERVICE:SERVER"; nothing for what is the path of a file.
[[nodiscard]] std::optional<PgPlace> PgPlaceOf(const QString& text);

// For a browser; `cache` may be null. Null on failure, with the reason.
[[nodiscard]] std::unique_ptr<IPartLibrary> OpenPgLibrary(const PgPlace& place, std::shared_ptr<CContentCache> cache,
                                                          LibraryProblem& problem);

} // namespace partkeep
