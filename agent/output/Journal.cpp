#include "agent/output/Journal.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace Agent {

namespace {

/// The journal says which stream is its own, as DEVICE:INODE; it may have been redirected since.
bool isJournal() {
    const char* const stream = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    return stream != nullptr && ::fstat(STDERR_FILENO, &status) == 0
           && stream == std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

} // namespace

std::string severityPrefix(Severity severity) {
    static const bool toJournal = isJournal();
    return toJournal ? '<' + std::to_string(static_cast<int>(severity)) + '>' : std::string();
}

} // namespace Agent
