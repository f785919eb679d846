#pragma once

#include <iosfwd>
#include <vector>

#include "agent/cli/Command.h"

namespace Agent {

/// Writes a script by which bash completes the program's command line: commands, their options and
/// words, and names of files.
void writeCompletion(std::ostream& out, const std::vector<Command>& commands);

} // namespace Agent
