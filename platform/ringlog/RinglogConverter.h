#pragma once

#include <ostream>

#include "platform/ringlog/RingFile.h"
#include "platform/ringlog/TextBuffer.h"
#include "platform/ringlog/TraceHandle.h"

namespace Duallog {

/// One message for both traces: its text is built once, and when the converter is destroyed it is
/// printed, if the handle prints the level, and written to the ring as one string, if a ring trace
/// file is open. For the ring alone the text is built on the stack and cut where it gets long.
class RinglogConverter {
  public:
    /// `descriptor` is used with converters only.
    RinglogConverter(Ringlog::TraceHandle& handle, int level,
                     Ringlog::MessageDescriptor& descriptor);
    ~RinglogConverter();
    RinglogConverter(const RinglogConverter&) = delete;
    RinglogConverter& operator=(const RinglogConverter&) = delete;

    std::ostream& stream() { return stream_; }

  private:
    Ringlog::TraceHandle& handle_;
    int level_;
    Ringlog::MessageDescriptor& descriptor_;
    bool print_;
    Ringlog::TextBuffer buffer_;
    std::ostream stream_;
};

} // namespace Duallog
