#include "partlibrary/session/service_servers.h"

#include "partlibrary/postgres/pg_servers.h"

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::chrono::seconds validity{10};

} // namespace

CServiceServers::CServiceServers(const QStringList& services)
{
    for (const QString& name : services) {
        services_.push_back({name, {}, {}, {}, std::nullopt});
    }
}

void CServiceServers::Ask()
{
    std::vector<Service*> due;
    QStringList names;
    for (Service& service : services_) {
        if (!service.asked || Clock::now() - *service.asked >= validity) {
            due.push_back(&service);
            names += service.name;
        }
    }
    const auto answers = ReadPgServers(names);
    for (std::size_t i = 0; i < due.size(); ++i) {
        due[i]->problem = answers[i].problem;
        if (answers[i].names) {
            due[i]->servers = *answers[i].names;
            due[i]->barred = answers[i].barred;
        }
        due[i]->asked = Clock::now();
    }
    problem_ = {};
    for (const Service& service : services_) {
        problem_ = problem_ ? problem_ : service.problem;
    }
}

QStringList CServiceServers::Servers()
{
    Ask();
    QStringList servers;
    for (const Service& service : services_) {
        servers += service.servers;
    }
    servers.removeDuplicates();
    return servers;
}

std::optional<PgPlace> CServiceServers::Find(const QString& server)
{
    Ask();
    for (Service& service : services_) { // a new one may have come
        if (!Knows(server) && !service.problem) {
            service.asked.reset();
        }
    }
    Ask();
    return FindIn(server, Knows(server) ? &Service::servers : &Service::barred);
}

// One that does not answer would be waited for a second time.
std::optional<PgPlace> CServiceServers::FindIn(const QString& server, QStringList Service::*list) const
{
    const auto found = std::find_if(services_.begin(), services_.end(),
                                    [&](const Service& service) { return (service.*list).contains(server); });
    return found != services_.end() && !found->problem ? std::optional(PgPlace{found->name, server}) : std::nullopt;
}

bool CServiceServers::Knows(const QString& server) const
{
    return std::any_of(services_.begin(), services_.end(),
                       [&](const Service& service) { return service.servers.contains(server); });
}

QStringList CServiceServers::Names() const
{
    QStringList names;
    for (const Service& service : services_) {
        names += service.name;
    }
    return names;
}

void CServiceServers::Retry()
{
    for (Service& service : services_) {
        service.asked.reset();
    }
}

} // namespace partkeep
