#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

#include "agent/cli/Cli.h"
#include "agent/ring/RingGuard.h"

/// A standard file that the parent has closed fails, rather than be the first that the agent opens.
static void keepStandardFilesApart() {
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(file, F_GETFD) < 0) {
            ::open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

int main(int argc, char** argv) {
    keepStandardFilesApart();
    // A reader that goes away is an error of writing, not the end of the process.
    std::signal(SIGPIPE, SIG_IGN);
    // So is a limit on the size of files.
    std::signal(SIGXFSZ, SIG_IGN);
    Agent::guardRing();
    return Agent::runCommandLine(argc, argv);
}
