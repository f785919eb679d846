#pragma once

#include <cstdint>

#include "platform/ringlog/CallSite.h"

namespace Ringlog {

/// What all ring messages of one statement share. Each statement owns one, static and constant
/// initialised; the ring file that is open gives it an id when its first message is written, and
/// the next file gives it another.
class MessageDescriptor {
  public:
    constexpr MessageDescriptor(const char* unit, int line, const char* signature)
        : site_{unit, line, signature} {}

    const CallSite& site() const { return site_; }

  private:
    friend class RingFile;

    CallSite site_;
    std::uint32_t file_ = 0; // serial number of the ring file that knows it
    std::uint32_t id_ = 0;
};

} // namespace Ringlog
