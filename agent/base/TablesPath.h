#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace Agent {

/// The folder in which an agent keeps its tables unless told otherwise: /dev/shm/directnet for
/// root, else "directnet" in the user's runtime folder; empty if there is none.
std::string defaultTablesPath();

/// That folder, or the one by default where none is named. Throws FailureError if there is neither.
std::string tablesPathOr(const std::string& named);

/// The group of that name or number. Throws BadInputError if there is none.
gid_t readGroup(const std::string& text);

/// The group of the folder; none if there is no folder.
std::optional<gid_t> groupOf(const std::string& folder);

} // namespace Agent
