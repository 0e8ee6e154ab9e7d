#include "partlibrary/tool/commands.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <unistd.h>

namespace {

// The second one ends the process at once.
extern "C" void AskToStop(int signal)
{
    partkeep::stop_asked = true;
    std::signal(signal, SIG_DFL);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        std::signal(SIGINT, AskToStop);
        std::signal(SIGTERM, AskToStop);
        if (std::signal(SIGHUP, AskToStop) == SIG_IGN) { // by nohup: the terminal may go
            std::signal(SIGHUP, SIG_IGN);
        }
        std::signal(SIGPIPE, SIG_DFL);
        const partkeep::ToolStreams streams{std::cout, std::cerr, isatty(STDERR_FILENO) == 1};
        const int end = partkeep::RunLibraryTool(argc, argv, streams);
        std::cout.flush();
        return std::cout || end != 0 ? end : static_cast<int>(partkeep::ToolEnd::System);
    } catch (const std::exception& trouble) {
        std::cerr << "partkeep-library: " << trouble.what() << '\n';
        return static_cast<int>(partkeep::ToolEnd::System);
    }
}
