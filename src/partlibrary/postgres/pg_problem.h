// What an error of the database server means here.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/postgres/pg_place.h"
#include "partlibrary/postgres/pg_result.h"

#include <string_view>

namespace partkeep {

// By the SQLSTATE of an error. The server gave up after as long as it is waited for here: whose clock is the first
// makes no difference.
[[nodiscard]] bool IsTimeOut(std::string_view state);

// The server ends this connection, or does not take a new one yet.
[[nodiscard]] bool IsLoss(std::string_view state);

// What a reader asked was in the way of something else, as on a standby what the primary has cleared up: the next
// attempt goes well.
[[nodiscard]] bool IsConflict(std::string_view state);

// `otherwise` is for an error that says nothing of itself. To whoever only reads it is no trouble that he cannot write.
[[nodiscard]] LibraryProblem PgProblem(const CPgResult& error, const PgPlace& place, bool reads,
                                       std::string_view otherwise);

// Of a connection that could not be made, from all that the client library says of it, SQLSTATEs included. A server
// that spoke and was not taken for the right one, or that the client library has no password for, gives no SQLSTATE.
[[nodiscard]] LibraryProblem PgConnectProblem(std::string_view text, const PgPlace& place, bool spoke);

} // namespace partkeep
