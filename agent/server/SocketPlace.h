#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace Agent {

/// Where an agent listens, and who may connect.
struct SocketPlace {
    static constexpr mode_t defaultMode = 0660;

    std::string path;
    std::optional<gid_t> group{}; ///< of the file; else the agent's
    mode_t mode = defaultMode;    ///< its permissions
};

} // namespace Agent
