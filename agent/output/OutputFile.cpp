#include "agent/output/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <utility>

namespace Agent {

namespace {

/// Milliseconds that a line may wait for a reader.
constexpr int linePatience = 500;

mode_t typeOf(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

/// The same pipe or terminal once more, in a mode of its own: whether a descriptor waits belongs to
/// what others have open too, the shell that started the program above all. A file on disk is not
/// opened once more, as it would be written from its beginning; it never waits for a reader either.
FileDescriptor openOnceMore(int descriptor) {
    if (typeOf(descriptor) != S_IFIFO && ::isatty(descriptor) == 0) {
        return {};
    }
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    return FileDescriptor(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

} // namespace

OutputFile::OutputFile(int descriptor)
    : descriptor_(descriptor), isSocket_(typeOf(descriptor) == S_IFSOCK),
      own_(openOnceMore(descriptor)) {}

bool OutputFile::isWritable(int milliseconds) const {
    pollfd polled{fd(), POLLOUT, 0};
    return ::poll(&polled, 1, milliseconds) > 0;
}

ssize_t OutputFile::write(std::string_view bytes) const {
    const ssize_t size = tryWrite(bytes);
    return size < 0 && (errno == EAGAIN || errno == EINTR) ? 0 : size;
}

ssize_t OutputFile::tryWrite(std::string_view bytes) const {
    if (isSocket_) {
        return ::send(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    if (own_) {
        return ::write(own_.get(), bytes.data(), bytes.size());
    }
    // What cannot be opened once more, such as the terminal of another user, is asked first. A pipe
    // that is writable takes that much at once.
    if (!isWritable(0)) {
        return 0;
    }
    return ::write(descriptor_, bytes.data(), std::min<std::size_t>(bytes.size(), PIPE_BUF));
}

void writeErrorLine(std::string_view line) {
    const OutputFile file(STDERR_FILENO);
    while (!line.empty() && file.isWritable(linePatience)) {
        const ssize_t size = file.write(line);
        if (size < 0) {
            return;
        }
        line.remove_prefix(static_cast<std::size_t>(size));
    }
}

} // namespace Agent
