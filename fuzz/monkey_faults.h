// Trouble of the machine while one action is done: a library that is away, no room for a file, no more open files, no
// memory. Gone with the object.
#pragma once

#include "tests/support/failing_memory.h"

#include <csignal>
#include <filesystem>
#include <optional>
#include <sys/resource.h>
#include <utility>

namespace partkeep {

// The sanitizer's check of an object's type opens a pipe, and takes its failure for the object's.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool files_may_end = false;
#else
inline constexpr bool files_may_end = true;
#endif

class CMonkeyFault {
public:
    // `library` is the file that can be away, where it is one.
    CMonkeyFault(unsigned choice, std::filesystem::path library) : library_(std::move(library))
    {
        const rlim_t amount = choice / 4;
        switch (choice % 4) {
        case 0:
            if (std::filesystem::exists(library_)) {
                std::filesystem::rename(library_, Away());
            }
            break;
        case 1:
            std::signal(SIGXFSZ, SIG_IGN);
            limit_.emplace(RLIMIT_FSIZE, amount % 4096);
            break;
        case 2:
            if (files_may_end) {
                limit_.emplace(RLIMIT_NOFILE, 3 + amount % 12);
            }
            break;
        default:
            failing_memory::allocations_left = 1 + amount % 400;
        }
    }
    ~CMonkeyFault()
    {
        failing_memory::allocations_left = 0;
        if (std::filesystem::exists(Away())) {
            std::filesystem::rename(Away(), library_);
        }
    }
    CMonkeyFault(const CMonkeyFault&) = delete;
    CMonkeyFault& operator=(const CMonkeyFault&) = delete;

private:
    class CLimit {
    public:
        CLimit(__rlimit_resource what, rlim_t amount) : what_(what)
        {
            getrlimit(what, &before_);
            const rlimit lower{amount, before_.rlim_max};
            setrlimit(what, &lower);
        }
        ~CLimit() { setrlimit(what_, &before_); }
        CLimit(const CLimit&) = delete;
        CLimit& operator=(const CLimit&) = delete;

    private:
        __rlimit_resource what_;
        rlimit before_{};
    };

    [[nodiscard]] std::filesystem::path Away() const { return library_.parent_path() / "away"; }

    std::filesystem::path library_;
    std::optional<CLimit> limit_;
};

} // namespace partkeep
