#include "partlibrary/session/service_servers.h"

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::chrono::seconds validity{10};

} // namespace

CServiceServers::CServiceServers(const QStringList& services)
{
    for (const QString& name : services) {
        services_.push_back({name, {}, {}, std::nullopt});
    }
}

void CServiceServers::Ask()
{
    problem_ = {};
    for (Service& service : services_) {
        if (!service.asked || Clock::now() - *service.asked >= validity) {
            service.problem = {};
            service.servers = ReadPgServers(service.name, service.problem).value_or(service.servers);
            service.asked = Clock::now();
        }
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
    const auto found = std::find_if(services_.begin(), services_.end(),
                                    [&](const Service& service) { return service.servers.contains(server); });
    if (found == services_.end() || found->problem) { // which would be waited for a second time
        return std::nullopt;
    }
    return PgPlace{found->name, server};
}

bool CServiceServers::Knows(const QString& server) const
{
    return std::any_of(services_.begin(), services_.end(),
                       [&](const Service& service) { return service.servers.contains(server); });
}

void CServiceServers::Retry()
{
    for (Service& service : services_) {
        service.asked.reset();
    }
}

} // namespace partkeep
