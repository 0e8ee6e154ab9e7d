#include "partlibrary/postgres/pg_hosts.h"

#include "partlibrary/postgres/pg_waits.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>

namespace partkeep {

namespace {

std::vector<std::string> SplitAtCommas(std::string_view list)
{
    std::vector<std::string> parts;
    for (std::size_t end = 0; end != std::string_view::npos; list.remove_prefix(std::min(end + 1, list.size()))) {
        end = list.find(',');
        parts.emplace_back(list.substr(0, end));
    }
    return parts;
}

// Each connection of the process would wait for the same host once more.
class CSilentHosts {
public:
    void Add(const CPgHosts::Host& host)
    {
        const std::lock_guard lock(mutex_);
        until_[host] = std::chrono::steady_clock::now() + impatience;
    }

    [[nodiscard]] bool Has(const CPgHosts::Host& host)
    {
        const std::lock_guard lock(mutex_);
        const auto found = until_.find(host);
        return found != until_.end() && std::chrono::steady_clock::now() < found->second;
    }

private:
    std::mutex mutex_;
    std::map<CPgHosts::Host, std::chrono::steady_clock::time_point> until_;
};

CSilentHosts& SilentHosts()
{
    static CSilentHosts hosts;
    return hosts;
}

} // namespace

CPgHosts::CPgHosts(const PqDriver& pq, PGconn* connection)
{
    const std::unique_ptr<PQconninfoOption, decltype(pq.PQconninfoFree)> settings(pq.PQconninfo(connection),
                                                                                  pq.PQconninfoFree);
    std::array<std::vector<std::string>, names.size()> lists;
    for (const PQconninfoOption* setting = settings.get(); setting != nullptr && setting->keyword != nullptr;
         ++setting) {
        const auto* const name = std::ranges::find(names, std::string_view(setting->keyword));
        if (name != names.end() && setting->val != nullptr && *setting->val != '\0') {
            lists[static_cast<std::size_t>(name - names.begin())] = SplitAtCommas(setting->val);
        }
    }
    hosts_.resize(std::max(lists[0].size(), lists[1].size()));
    for (std::size_t row = 0; row < hosts_.size(); ++row) {
        for (std::size_t column = 0; column < names.size(); ++column) {
            const auto& list = lists[column];
            hosts_[row][column] =
                list.empty() ? std::string() : list[std::min(row, list.size() - 1)]; // one port for all
        }
    }
}

std::chrono::steady_clock::time_point CPgHosts::ShareUntil(std::chrono::steady_clock::time_point until) const
{
    const auto now = std::chrono::steady_clock::now();
    return now + (until - now) / static_cast<int>(std::max<std::size_t>(hosts_.size(), 1));
}

void CPgHosts::LeaveOut(const PqDriver& pq, const PGconn* connection)
{
    const std::string_view host = pq.PQhost(connection);
    const std::string_view address = pq.PQhostaddr(connection);
    const std::string_view port = pq.PQport(connection);
    auto silent = std::ranges::find_if(hosts_, [&](const Host& other) {
        return (other[1].empty() ? other[0] == host : other[1] == address) && (other[2].empty() || other[2] == port);
    });
    silent = silent != hosts_.end() ? silent : hosts_.begin(); // one that is written in another way
    SilentHosts().Add(*silent);
    hosts_.erase(silent);
}

bool CPgHosts::LeaveOutSilent()
{
    const auto is_silent = [](const Host& host) { return SilentHosts().Has(host); };
    return !std::ranges::all_of(hosts_, is_silent) && std::erase_if(hosts_, is_silent) > 0;
}

CPgHosts::Host CPgHosts::Values() const
{
    Host values;
    for (std::size_t column = 0; column < names.size(); ++column) {
        bool any = false;
        for (const Host& host : hosts_) {
            values[column] += (&host != hosts_.data() ? "," : "") + host[column];
            any = any || !host[column].empty();
        }
        if (!any) {
            values[column].clear();
        }
    }
    return values;
}

} // namespace partkeep
