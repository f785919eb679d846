#pragma once

#include <ostream>

namespace Agent {

/// Flushes what was written. Throws FailureError when the output did not take all of it: a closed
/// pipe, a full disk.
void finishOutput(std::ostream& out);

/// Whether whoever read standard output, a pipe, has gone.
bool isReaderGone();

/// Whether to use colour on standard output: on a terminal, unless the environment variable
/// NO_COLOR is set and not empty.
bool useColour();

} // namespace Agent
