#pragma once

namespace Orb {

/// Prints "assertion failed: TEXT (FILE:LINE)" to standard error, if that takes it at once, and
/// aborts.
[[noreturn]] void assertionFailed(const char* text, const char* file, int line) noexcept;

} // namespace Orb

/// An invariant whose breach stops the agent, in every build type. `text` is what is printed; it
/// is fixed, so that a breach can be searched for.
#define ORB_ASSERT(condition, text)                                                                \
    (static_cast<bool>(condition) ? void(0) : Orb::assertionFailed(text, __FILE__, __LINE__))
