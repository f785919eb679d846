#pragma once

#include <string>

namespace Agent {

/// Where files live that are there as long as an agent runs: /run for root, else the user's runtime
/// folder; empty if there is none.
std::string runtimeFolder();

/// Makes the folder in which a running agent keeps files of its own, unless it is there:
/// "directnet" in the runtime folder. Only its owner and group may enter. Returns its path. Throws
/// FailureError where there is no runtime folder, or where the name is taken by anything but a
/// folder of this user.
std::string stateFolder();

} // namespace Agent
