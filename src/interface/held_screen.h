// Keeps a screen open that was tried by a program which is gone: a display server may start anew when its last client
// leaves it, and refuses whoever comes at that moment.
#pragma once

#include <array>
#include <sys/types.h>

namespace partkeep {

// Two ends of a socket. What the program sends into its end stays open for as long as this is there, unread. Without
// ends where the system gives none.
class CHeldScreen {
public:
    CHeldScreen();
    ~CHeldScreen();
    CHeldScreen(const CHeldScreen&) = delete;
    CHeldScreen& operator=(const CHeldScreen&) = delete;

    [[nodiscard]] int ProgramsEnd() const { return ends_[0]; } // -1: none

private:
    std::array<int, 2> ends_{-1, -1};
    std::array<ino_t, 2> numbers_{};
};

} // namespace partkeep
