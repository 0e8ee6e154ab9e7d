// The libraries in databases: which servers the configured services lead to. What was learnt holds for some seconds, so
// that a database that does not answer is waited for once.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/postgres/pg_place.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>
#include <vector>

namespace partkeep {

class CServiceServers {
public:
    explicit CServiceServers(const QStringList& services);

    [[nodiscard]] QStringList Servers();
    // The first service that has it, or else one that has it for others: opening it tells so. Nothing where none has,
    // or one that may does not answer: see Problem.
    [[nodiscard]] std::optional<PgPlace> Find(const QString& server);
    [[nodiscard]] bool Knows(const QString& server) const; // by what was learnt before
    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; }
    [[nodiscard]] QStringList Names() const; // of the services
    void Retry();

private:
    using Clock = std::chrono::steady_clock;
    struct Service {
        QString name;
        QStringList servers; // as they were last told
        QStringList barred;
        LibraryProblem problem;
        std::optional<Clock::time_point> asked;
    };

    void Ask();
    [[nodiscard]] std::optional<PgPlace> FindIn(const QString& server, QStringList Service::*list) const;

    std::vector<Service> services_;
    LibraryProblem problem_;
};

} // namespace partkeep
