#include "partlibrary/postgres/pg_place.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/postgres/pg_library.h"

#include <utility>

namespace partkeep {

bool IsSchemaName(const QString& server)
{
    static constexpr std::size_t longest = 63; // bytes
    return !server.isEmpty() && ToUtf8(server).size() <= longest && !server.startsWith(QStringLiteral("pg_")) &&
           server != QStringLiteral("$user");
}

std::optional<PgPlace> PgPlaceOf(const QString& text)
{
    const qsizetype colon = text.indexOf(u':');
    if (colon <= 0 || text.contains(u'/') || text.endsWith(FromWide(library_extension))) {
        return std::nullopt;
    }
    return PgPlace{text.left(colon), text.sliced(colon + 1)};
}

std::unique_ptr<IPartLibrary> OpenPgLibrary(const PgPlace& place, std::shared_ptr<CContentCache> cache,
                                            LibraryProblem& problem)
{
    return CPgLibrary::Open(place, PgUse::Browse, problem, std::move(cache));
}

} // namespace partkeep
