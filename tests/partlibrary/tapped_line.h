// A line to the test's database that counts, and on which something can be made to happen at a certain step: before the
// Nth block that a client sends goes on to the server. Somebody else may answer in the server's place.
#pragma once

#include "tests/partlibrary/library_fixture.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace partkeep {

inline const QString tapped_station = u"tapped-station"_s;

class CTappedLine {
public:
    // Each block takes the delay to come to the server.
    explicit CTappedLine(std::chrono::milliseconds delay = {}) : delay_(delay)
    {
        const std::string folder = folder_.Path().string();
        const sockaddr_un own = Address(folder);
        listening_ = bind(line_, reinterpret_cast<const sockaddr*>(&own), sizeof own) == 0 && listen(line_, 50) == 0;
        accepting_ = std::thread([this] { Accept(); });
        for (const std::string user : {"station", "librarian"}) {
            AddService("tapped-" + user, "host=" + folder + "\nport=" + Port() + "\nuser=" + user + "\n");
        }
    }
    ~CTappedLine()
    {
        shutdown(line_, SHUT_RDWR);
        accepting_.join();
        Clear();
        close(line_);
    }
    CTappedLine(const CTappedLine&) = delete;
    CTappedLine& operator=(const CTappedLine&) = delete;

    // What has come from the server.
    [[nodiscard]] std::int64_t Bytes() const { return bytes_; }
    // What was sent before anything came is one.
    [[nodiscard]] int Questions() const { return questions_; }
    // Counts anew, once what happens has happened, on a thread of the line, and ends all connections.
    void Arm(int step, std::function<void()> event, std::string text = {})
    {
        Clear();
        const std::lock_guard lock(mutex_);
        steps_ = 0;
        at_ = step;
        at_text_ = std::move(text);
        event_ = std::move(event);
    }
    // The same at a block with this text in it.
    void ArmAt(std::string text, std::function<void()> event) { Arm(-1, std::move(event), std::move(text)); }
    [[nodiscard]] int Steps() const { return steps_; }
    // How long what happened has taken in all.
    [[nodiscard]] std::chrono::nanoseconds Held() const { return std::chrono::nanoseconds(held_); }
    // Is handed what a client has sent, and what the server said last, and answers itself; or false: the server is to.
    using Impostor = std::function<bool(int client, std::string_view sent, const std::string& last)>;
    void Pose(Impostor impostor)
    {
        const std::lock_guard lock(mutex_);
        impostor_ = std::move(impostor);
    }
    // Ends all connections, both ways.
    void Cut()
    {
        const std::lock_guard lock(mutex_);
        for (const int end : ends_) {
            shutdown(end, SHUT_RDWR);
        }
    }

private:
    static std::string Port()
    {
        const char* const port = std::getenv("PARTKEEP_POSTGRES_PORT");
        return port != nullptr ? port : "5432";
    }

    static sockaddr_un Address(const std::string& folder)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = folder + "/.s.PGSQL." + Port();
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        return address;
    }

    void Clear()
    {
        Cut();
        std::vector<std::jthread> ways;
        std::vector<int> ends;
        {
            const std::lock_guard lock(mutex_);
            ways.swap(ways_);
            ends.swap(ends_);
        }
        ways.clear(); // each comes to its end
        for (const int end : ends) {
            close(end);
        }
    }

    void Accept()
    {
        const sockaddr_un server = Address(std::getenv("PARTKEEP_POSTGRES"));
        for (int client = 0; listening_ && (client = accept4(line_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
            const int beyond = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
            const bool there = connect(beyond, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0;
            const std::lock_guard lock(mutex_);
            ends_.insert(ends_.end(), {client, beyond});
            if (there) {
                ways_.emplace_back([this, client, beyond] { Carry(client, beyond, true); });
                ways_.emplace_back([this, client, beyond] { Carry(beyond, client, false); });
            } else {
                shutdown(client, SHUT_RDWR);
            }
        }
    }

    void Carry(int from, int to, bool counted)
    {
        std::vector<char> block(65536);
        for (ssize_t size = 0; (size = recv(from, block.data(), block.size(), 0)) > 0;) {
            const std::string_view said(block.data(), static_cast<std::size_t>(size));
            if (counted && (Step(said), IsAnswered(from, said))) {
                continue;
            }
            if (!counted) {
                const std::lock_guard lock(mutex_);
                bytes_ += size;
                answered_ = true;
                last_ += said;
            }
            for (ssize_t sent = 0, more = 0; sent < size; sent += more) {
                more = send(to, block.data() + sent, static_cast<std::size_t>(size - sent), MSG_NOSIGNAL);
                if (more <= 0) {
                    break;
                }
            }
        }
        shutdown(from, SHUT_RDWR);
        shutdown(to, SHUT_RDWR);
    }

    bool IsAnswered(int client, std::string_view sent)
    {
        std::unique_lock lock(mutex_);
        const Impostor impostor = impostor_;
        const std::string last = impostor ? last_ : std::exchange(last_, {});
        lock.unlock();
        return impostor && impostor(client, sent, last);
    }

    void Step(std::string_view block)
    {
        questions_ += answered_.exchange(false) ? 1 : 0;
        std::this_thread::sleep_for(delay_);
        std::function<void()> event; // others go on meanwhile: the server may wait for what they have begun
        {
            const std::lock_guard lock(mutex_);
            const bool said = !at_text_.empty() && block.find(at_text_) != std::string_view::npos;
            event = steps_++ == at_ || said ? event_ : nullptr;
        }
        if (event) {
            const auto begin = std::chrono::steady_clock::now();
            event();
            held_ += std::chrono::nanoseconds(std::chrono::steady_clock::now() - begin).count();
        }
    }

    const std::chrono::milliseconds delay_;
    CTemporaryFolder folder_;
    int line_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool listening_ = false;
    std::mutex mutex_;
    std::vector<int> ends_;
    std::vector<std::jthread> ways_;
    std::function<void()> event_;
    Impostor impostor_;
    std::string last_;
    std::atomic<int> steps_ = 0;
    std::atomic<int> questions_ = 0;
    std::atomic<bool> answered_ = true;
    std::atomic<std::int64_t> bytes_ = 0;
    std::atomic<std::int64_t> held_ = 0;
    int at_ = -1;
    std::string at_text_;
    std::thread accepting_;
};

} // namespace partkeep
