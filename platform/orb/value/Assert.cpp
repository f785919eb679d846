#include "platform/orb/value/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Orb {

void assertionFailed(const char* text, const char* file, int line) noexcept {
    std::fprintf(stderr, "assertion failed: %s (%s:%d)\n", text, file, line);
    std::abort();
}

} // namespace Orb
