#include "agent/server/SocketFile.h"

#include "agent/base/Errors.h"

namespace Agent {

void failSocket(const std::string& path, const std::string& why) {
    throw FailureError("socket " + path + ": " + why);
}

std::optional<FileIdentity> fileNamed(const std::string& name) {
    struct stat status {};
    return ::lstat(name.c_str(), &status) == 0 ? std::optional(FileIdentity(status)) : std::nullopt;
}

} // namespace Agent
