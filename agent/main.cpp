#include <csignal>

#include "agent/cli/Cli.h"

int main(int argc, char** argv) {
    // A reader that goes away is an error of writing, not the end of the process.
    std::signal(SIGPIPE, SIG_IGN);
    return Agent::runCommandLine(argc, argv);
}
