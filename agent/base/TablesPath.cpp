#include "agent/base/TablesPath.h"

#include <charconv>
#include <grp.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "agent/base/Errors.h"
#include "agent/base/StateFolder.h"

namespace Agent {

std::string defaultTablesPath() {
    if (::geteuid() == 0) {
        return "/dev/shm/directnet";
    }
    const std::string folder = runtimeFolder();
    return folder.empty() ? "" : folder + "/directnet";
}

std::string tablesPathOr(const std::string& named) {
    std::string path = named.empty() ? defaultTablesPath() : named;
    if (path.empty()) {
        throw FailureError("there is no runtime folder to find the tables in; use --tables");
    }
    return path;
}

gid_t readGroup(const std::string& text) {
    if (const group* found = ::getgrnam(text.c_str())) {
        return found->gr_gid;
    }
    gid_t id = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, id);
    if (result.ec != std::errc() || result.ptr != end || id == static_cast<gid_t>(-1)) {
        throw BadInputError("directnet: no group is called " + text);
    }
    return id;
}

std::optional<gid_t> groupOf(const std::string& folder) {
    struct stat status {};
    return ::stat(folder.c_str(), &status) == 0 ? std::optional(status.st_gid) : std::nullopt;
}

} // namespace Agent
