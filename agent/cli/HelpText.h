#pragma once

#include <string>
#include <vector>

#include "agent/cli/Command.h"

namespace Agent {

/// What `--help` prints of the program and of a command: what the manual says, in lines of at most
/// 79 columns.
std::string helpOfProgram(const std::vector<Command>& commands);
std::string helpOfCommand(const Command& command);

} // namespace Agent
