#include "agent/output/Output.h"

#include <cstdlib>
#include <poll.h>
#include <unistd.h>

#include "agent/base/Errors.h"

namespace Agent {

void finishOutput(std::ostream& out) {
    out.flush();
    if (!out) {
        throw FailureError("cannot write the output");
    }
}

bool isReaderGone() {
    pollfd output{STDOUT_FILENO, 0, 0};
    return ::poll(&output, 1, 0) > 0 && (output.revents & POLLERR) != 0;
}

bool useColour() {
    const char* noColour = std::getenv("NO_COLOR");
    return (noColour == nullptr || *noColour == '\0') && ::isatty(STDOUT_FILENO) != 0;
}

} // namespace Agent
