#include "agent/run/ConfigText.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "agent/base/Errors.h"
#include "agent/base/FileDescriptor.h"

namespace Agent {

namespace {

constexpr std::size_t piece = std::size_t{64} << 10U;

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
    throw BadInputError(path + ": " + why);
}

std::string readAll(const std::string& path, int file) {
    std::string text;
    ssize_t size = 0;
    do {
        const std::size_t before = text.size();
        text.resize(before + piece);
        do {
            size = ::read(file, text.data() + before, piece);
        } while (size < 0 && errno == EINTR);
        if (size < 0) {
            refuse(path, std::strerror(errno));
        }
        text.resize(before + static_cast<std::size_t>(size));
        if (text.size() > maxConfigSize) {
            refuse(path, "is larger than 64 MiB");
        }
    } while (size > 0);
    return text;
}

} // namespace

std::string readConfigText(const std::string& path) {
    if (path == "-") {
        return readAll(path, STDIN_FILENO);
    }
    // Without O_NONBLOCK the opening itself would wait for a writer of a pipe.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) {
        refuse(path, std::strerror(errno));
    }
    if (S_ISDIR(status.st_mode)) {
        refuse(path, "is a directory");
    }
    if (!S_ISREG(status.st_mode)) {
        refuse(path, "is no regular file");
    }
    return readAll(path, file.get());
}

} // namespace Agent
