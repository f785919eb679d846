#pragma once

#include <string>

namespace Agent {

/// Makes the folder in which a running agent keeps files of its own, unless it is there:
/// "directnet" in the runtime folder. Only its owner and group may enter. Returns its path. Throws
/// FailureError where there is no runtime folder, or where the name is taken by anything but a
/// folder of this user.
std::string stateFolder();

} // namespace Agent
