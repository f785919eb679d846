#pragma once

namespace Agent {

/// Lets the process live on when the file of its ring trace is cut off while it is written, or has
/// no room on its disk: installs a handler of SIGBUS, which any other cause ends as ever. The ring
/// is a mapping, since that costs nothing per message and keeps every message of a process that is
/// killed; the signal is the price.
void guardRing();

} // namespace Agent
