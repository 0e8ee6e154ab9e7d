// The hosts that a service names, less those that do not answer: the client library goes on to the next one only when
// one refuses, and would wait for one that swallows everything as long as it is let.
#pragma once

#include "partlibrary/postgres/pq_functions.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace partkeep {

class CPgHosts {
public:
    static constexpr std::array<const char*, 3> names{"host", "hostaddr", "port"};
    using Host = std::array<std::string, names.size()>;

    CPgHosts() = default; // whatever the service has
    // As a connection that was begun has them.
    CPgHosts(const PqDriver& pq, PGconn* connection);

    [[nodiscard]] std::size_t Count() const { return hosts_.size(); }
    // Until when the first of them may be waited for, if there is time for all until then.
    [[nodiscard]] std::chrono::steady_clock::time_point ShareUntil(std::chrono::steady_clock::time_point until) const;
    // Leaves out the one that a connection of these hosts waits for, which then counts as silent for some seconds.
    void LeaveOut(const PqDriver& pq, const PGconn* connection);
    // Leaves out those that count as silent, unless all do. Whether there were any.
    bool LeaveOutSilent();
    // The value of each of the names, with commas. Empty: not set.
    [[nodiscard]] Host Values() const;

private:
    std::vector<Host> hosts_;
};

} // namespace partkeep
