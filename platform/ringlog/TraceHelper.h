#pragma once

#include <optional>
#include <ostream>

#include "platform/ringlog/TextBuffer.h"
#include "platform/ringlog/TraceHandle.h"

namespace Ringlog {

/// One text message under construction; it is printed when it is destroyed.
class TraceMessage {
  public:
    TraceMessage(TraceHandle& handle, int level, const CallSite& site)
        : handle_(handle), level_(level), site_(site), stream_(&buffer_) {}
    ~TraceMessage() { handle_.print(level_, site_, buffer_.text()); }
    TraceMessage(const TraceMessage&) = delete;
    TraceMessage& operator=(const TraceMessage&) = delete;

    std::ostream& stream() { return stream_; }

  private:
    TraceHandle& handle_;
    int level_;
    CallSite site_;
    TextBuffer buffer_{TextBuffer::WhenFull::grow};
    std::ostream stream_;
};

/// The permission to print one message: there is one only while the handle prints the level.
class TraceHelper {
  public:
    static std::optional<TraceHelper> createIfEnabled(TraceHandle& handle, int level) {
        return handle.enabled(level) ? std::optional(TraceHelper(handle, level)) : std::nullopt;
    }

    /// Starts the message of one statement: the unit `file`, `line`, and the signature `function`.
    TraceMessage trace(const char* file, int line, const char* function) const {
        return {*handle_, level_, CallSite{file, line, function}};
    }

  private:
    TraceHelper(TraceHandle& handle, int level) : handle_(&handle), level_(level) {}

    TraceHandle* handle_;
    int level_;
};

} // namespace Ringlog
