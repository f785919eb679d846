#include "agent/base/StateFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "agent/base/Errors.h"
#include "agent/base/FileDescriptor.h"

namespace Agent {

namespace {

constexpr mode_t mode = 0750;

[[noreturn]] void fail(const std::string& path, const std::string& why) {
    throw FailureError("folder " + path + ": " + why);
}

} // namespace

std::string runtimeFolder() {
    if (::geteuid() == 0) {
        return "/run";
    }
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder == nullptr ? "" : folder;
}

std::string stateFolder() {
    const std::string parent = runtimeFolder();
    if (parent.empty()) {
        throw FailureError("no runtime folder");
    }
    std::string path = parent + "/directnet";
    if (::mkdir(path.c_str(), mode) != 0 && errno != EEXIST) {
        fail(path, std::strerror(errno));
    }
    const FileDescriptor folder(
        ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!folder || ::fstat(folder.get(), &status) != 0) {
        fail(path, std::strerror(errno));
    }
    if (status.st_uid != ::geteuid()) {
        fail(path, "belongs to another user");
    }
    // Whoever may write there could put a file of theirs under a name of ours.
    if ((status.st_mode & 07777U) != mode && ::fchmod(folder.get(), mode) != 0) {
        fail(path, std::strerror(errno));
    }
    return path;
}

} // namespace Agent
