#pragma once

#include <optional>
#include <string>
#include <sys/stat.h>

namespace Agent {

/// Says why there can be no socket at the path. Throws FailureError.
[[noreturn]] void failSocket(const std::string& path, const std::string& why);

/// Which file it is, whatever its name: a name may be given to another file at any time.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;

    explicit FileIdentity(const struct stat& status)
        : device(status.st_dev), inode(status.st_ino) {}

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// The file that has the name now, links not followed; nothing if there is none.
std::optional<FileIdentity> fileNamed(const std::string& name);

} // namespace Agent
