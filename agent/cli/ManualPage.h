#pragma once

#include <iosfwd>
#include <vector>

#include "agent/cli/Command.h"

namespace Agent {

/// Writes the page of the program in the manual, directnet(1), in roff. As with the pages of its
/// commands, what is written by hand follows behind: see agent/cli/manual.
void writeProgramPage(std::ostream& out, const std::vector<Command>& commands);
/// Writes the page of a command, such as directnet-run(1).
void writeCommandPage(std::ostream& out, const Command& command);

} // namespace Agent
