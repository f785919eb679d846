#pragma once

namespace Agent {

/// Runs the program's command line. Returns the exit status: 0 fine, 1 failure, 2 bad usage or
/// input.
int runCommandLine(int argc, const char* const* argv);

} // namespace Agent
