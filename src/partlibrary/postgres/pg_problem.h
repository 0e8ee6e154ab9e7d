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

// `otherwise` is for an error that says nothing of itself. To whoever only reads it is no trouble that he cannot write.
[[nodiscard]] LibraryProblem PgProblem(const CPgResult& error, const PgPlace& place, bool reads,
                                       std::string_view otherwise);

} // namespace partkeep
