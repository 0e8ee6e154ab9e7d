// Runs a program beside a host that may do anything with processes, signals and descriptors, so that neither sees the
// other.
#pragma once

#include <chrono>
#include <string>

namespace partkeep {

struct ProgramEnd {
    int code = -1; // -1: not started, killed, or out of time
    bool ran_out_of_time = false;
};

// Runs the program without arguments in the host's environment and waits for its end; kills it after `time`. `input` is
// its standard input, where it is not -1; its other standard streams are shut. The host gets no SIGCHLD from it and
// cannot reap it, whatever its handlers do; none of its other descriptors are used or inherited. The calling thread
// takes no signal meanwhile; other threads go on.
[[nodiscard]] ProgramEnd RunShielded(const std::string& program, std::chrono::milliseconds time, int input = -1);

} // namespace partkeep
