// What a host without graphics pays: loading the component and one read of a part without a dialog, each time in a new
// process that has nothing of it yet. docs/host-interface.md holds the command and the figures.
//   host_bench LIBRARY SAMPLES-PROGRAM ROUNDS
#include "partkeep_read.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::array what{"time, ms", "of that, processor, ms", "private memory, MB"};
using Figures = std::array<double, what.size()>;

double Milliseconds(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// What this process has written to, by the system's own count: file pages are shared, or not, with what else runs.
double PrivateMegabytes()
{
    std::ifstream counts("/proc/self/smaps_rollup");
    double kilobytes = 0.0;
    for (std::string line; std::getline(counts, line);) {
        if (line.starts_with("Private_Dirty")) {
            kilobytes += std::strtod(line.c_str() + line.find(':') + 1, nullptr);
        }
    }
    return kilobytes / 1024.0;
}

template <typename Function>
Function* Named(void* library, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(library, name));
}

// False unless the part was read.
bool LoadAndRead(const char* path, const char* working_folder)
{
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return false;
    }
    partkeep_read* object = Named<decltype(partkeep_read_create)>(library, "partkeep_read_create")();
    Named<decltype(partkeep_read_set_working_folder)>(library, "partkeep_read_set_working_folder")(object,
                                                                                                   working_folder);
    char* file = nullptr;
    const auto read = Named<decltype(partkeep_read_read_cad_data)>(library, "partkeep_read_read_cad_data");
    return read(object, "PLATES", "Brackets\\L", "BRK-1", "", &file, nullptr, nullptr, nullptr, nullptr, nullptr) ==
               PARTKEEP_READ_OK &&
           *file != '\0';
}

// In a new process, by this very program; what it says comes back.
int BeHost(const char* library, const char* working_folder)
{
    const double memory = PrivateMegabytes(); // first: to count takes time
    const Figures start{Milliseconds(CLOCK_MONOTONIC), Milliseconds(CLOCK_PROCESS_CPUTIME_ID), memory};
    if (!LoadAndRead(library, working_folder)) {
        return 1;
    }
    const Figures end{Milliseconds(CLOCK_MONOTONIC), Milliseconds(CLOCK_PROCESS_CPUTIME_ID), PrivateMegabytes()};
    for (std::size_t figure = 0; figure < what.size(); ++figure) {
        std::printf("%f ", end[figure] - start[figure]);
    }
    return 0;
}

Figures RunHost(const std::string& command)
{
    Figures figures{};
    FILE* host = popen(command.c_str(), "r");
    for (double& figure : figures) {
        if (host == nullptr || std::fscanf(host, "%lf", &figure) != 1) {
            std::fputs("no part was read\n", stderr);
            std::exit(1);
        }
    }
    pclose(host);
    return figures;
}

void Tell(std::vector<Figures>& rounds)
{
    std::printf("%-24s %8s %8s %8s %8s   of %zu\n", "", "least", "median", "90 %", "most", rounds.size());
    for (std::size_t figure = 0; figure < what.size(); ++figure) {
        std::sort(rounds.begin(), rounds.end(),
                  [figure](const Figures& one, const Figures& other) { return one[figure] < other[figure]; });
        const auto at = [&](std::size_t percent) { return rounds[(rounds.size() - 1) * percent / 100][figure]; };
        std::printf("%-24s %8.2f %8.2f %8.2f %8.2f\n", what[figure], at(0), at(50), at(90), at(100));
    }
}

} // namespace

int main(int count, char** arguments)
{
    if (count == 3) {
        return BeHost(arguments[1], arguments[2]);
    }
    if (count != 4) {
        return 2;
    }
    char name[] = "/tmp/partkeep-bench-XXXXXX";
    const fs::path place = mkdtemp(name);
    fs::create_directories(place / "config/partkeep-read");
    fs::create_directories(place / "libraries");
    fs::create_directories(place / "target");
    std::ofstream(place / "config/partkeep-read/registry.ini")
        << "[HKEY_CURRENT_USER\\software\\Velmar\\ORVIC\\PartLibrary]\nfolder=" << (place / "libraries").string()
        << '\n';
    setenv("XDG_CONFIG_HOME", (place / "config").c_str(), 1);
    const std::string samples = std::string("'") + arguments[2] + "' '" + (place / "libraries").string() + "' >&2";
    if (std::system(samples.c_str()) != 0) {
        return 1;
    }
    const std::string host =
        std::string("'") + arguments[0] + "' '" + arguments[1] + "' '" + place.string() + "/target/'";
    RunHost(host); // what the system keeps of files is there from now on
    std::vector<Figures> rounds(static_cast<std::size_t>(std::max(1, std::atoi(arguments[3]))));
    std::generate(rounds.begin(), rounds.end(), [&] { return RunHost(host); });
    Tell(rounds);
    fs::remove_all(place);
}
