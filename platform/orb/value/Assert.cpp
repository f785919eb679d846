#include "platform/orb/value/Assert.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <poll.h>
#include <unistd.h>

namespace Orb {

void assertionFailed(const char* text, const char* file, int line) noexcept {
    char message[1024];
    const int wanted =
        std::snprintf(message, sizeof message, "assertion failed: %s (%s:%d)\n", text, file, line);
    // Whoever reads standard error may have stopped: the process ends all the same.
    pollfd error{STDERR_FILENO, POLLOUT, 0};
    if (wanted > 0 && ::poll(&error, 1, 0) > 0) {
        const auto size = std::min(static_cast<std::size_t>(wanted), sizeof message - 1);
        [[maybe_unused]] const auto written = ::write(STDERR_FILENO, message, size);
    }
    std::abort();
}

} // namespace Orb
