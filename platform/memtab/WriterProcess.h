#pragma once

#include <cstdint>

namespace OrbMemtab {

/// Whether the process of that id, as far as can be seen, has been killed or has gone: what it
/// holds will be let go of in a moment. One that has much memory needs a while to end.
bool isEnding(std::uint32_t pid);

} // namespace OrbMemtab
