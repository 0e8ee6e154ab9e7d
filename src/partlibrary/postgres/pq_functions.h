// The functions of the database's client library, as the module that is linked with it hands them out.
#pragma once

#include <cstddef>
#include <libpq-fe.h>
#include <memory>

namespace partkeep {

// What of the client library is called.
#define PARTKEEP_PQ_FUNCTIONS(X)                                                                                       \
    X(PQclear)                                                                                                         \
    X(PQconninfo)                                                                                                      \
    X(PQconninfoFree)                                                                                                  \
    X(PQconnectPoll)                                                                                                   \
    X(PQconnectStartParams)                                                                                            \
    X(PQconsumeInput)                                                                                                  \
    X(PQenterPipelineMode)                                                                                             \
    X(PQerrorMessage)                                                                                                  \
    X(PQexitPipelineMode)                                                                                              \
    X(PQfinish)                                                                                                        \
    X(PQflush)                                                                                                         \
    X(PQfreemem)                                                                                                       \
    X(PQgetResult)                                                                                                     \
    X(PQgetisnull)                                                                                                     \
    X(PQgetlength)                                                                                                     \
    X(PQgetvalue)                                                                                                      \
    X(PQhost)                                                                                                          \
    X(PQhostaddr)                                                                                                      \
    X(PQisBusy)                                                                                                        \
    X(PQnotifies)                                                                                                      \
    X(PQntuples)                                                                                                       \
    X(PQpipelineSync)                                                                                                  \
    X(PQport)                                                                                                          \
    X(PQputCopyData)                                                                                                   \
    X(PQputCopyEnd)                                                                                                    \
    X(PQresultErrorField)                                                                                              \
    X(PQresultErrorMessage)                                                                                            \
    X(PQresultStatus)                                                                                                  \
    X(PQsendQueryParams)                                                                                               \
    X(PQsendQueryPrepared)                                                                                             \
    X(PQsetErrorVerbosity)                                                                                             \
    X(PQsetNoticeProcessor)                                                                                            \
    X(PQsetSingleRowMode)                                                                                              \
    X(PQsetnonblocking)                                                                                                \
    X(PQsocket)                                                                                                        \
    X(PQstatus)

struct PqDriver {
    std::size_t bytes; // of this structure, by which the module and who loads it know each other
// NOLINTBEGIN(bugprone-macro-parentheses): a name stands there
#define PARTKEEP_PQ_MEMBER(name) decltype(&::name) name;
    PARTKEEP_PQ_FUNCTIONS(PARTKEEP_PQ_MEMBER)
#undef PARTKEEP_PQ_MEMBER
    // NOLINTEND(bugprone-macro-parentheses)
};

struct CPqFinish {
    const PqDriver* driver;
    void operator()(PGconn* connection) const { driver->PQfinish(connection); }
};
using PqConnection = std::unique_ptr<PGconn, CPqFinish>;

inline constexpr const char* postgres_module_file = "libpartkeep-read-postgres.so";
inline constexpr const char* postgres_module_entry = "partkeep_postgres_driver";
using PostgresModuleEntry = const PqDriver*();

} // namespace partkeep
