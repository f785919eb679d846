#include "tables/reader/Folder.h"

#include <cerrno>
#include <cstring>
#include <ctime>

#include <fcntl.h>

namespace Tables {

bool Folder::pathIs(const char* path, ErrorText& error) {
    const std::size_t length = std::strlen(path);
    if (length == 0 || length >= sizeof path_) {
        error.set("the path of the folder is empty or too long");
        return false;
    }
    std::memcpy(path_, path, length + 1);
    return true;
}

Found Folder::look(ErrorText& error) {
    struct stat status {};
    if (descriptor_ && ::lstat(path_, &status) == 0 && FileIdentity::of(status) == identity_) {
        noteTimes(status);
        return Found::here;
    }
    Descriptor found(::open(path_, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!found && errno == ENOENT) {
        return Found::absent;
    }
    if (!found || ::fstat(found.get(), &status) != 0) {
        const int cause = errno;
        const bool link = ::lstat(path_, &status) == 0 && S_ISLNK(status.st_mode);
        error.set("%s: %s", path_, link ? "is a symbolic link" : std::strerror(cause));
        return Found::refused;
    }
    descriptor_ = static_cast<Descriptor&&>(found);
    identity_ = FileIdentity::of(status);
    owner_ = status.st_uid;
    modified_ = status.st_mtim;
    ++generation_;
    return Found::here;
}

/// The system's time of a change is coarse, so another change may have the same one for a while.
void Folder::noteTimes(const struct stat& status) {
    static constexpr std::time_t coarseSeconds = 2;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const timespec& modified = status.st_mtim;
    if (modified.tv_sec != modified_.tv_sec || modified.tv_nsec != modified_.tv_nsec
        || now.tv_sec - modified.tv_sec < coarseSeconds) {
        modified_ = modified;
        ++generation_;
    }
}

} // namespace Tables
