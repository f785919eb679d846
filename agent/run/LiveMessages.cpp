#include "agent/run/LiveMessages.h"

#include <unistd.h>

#include "agent/base/Utf8.h"
#include "agent/base/WallTime.h"
#include "platform/ringlog/TraceHandle.h"

namespace Agent {

namespace {

/// Bytes that may wait for a reader.
constexpr std::size_t capacity = std::size_t{1} << 20U;

} // namespace

LiveMessages::LiveMessages()
    : file_(STDERR_FILENO), queue_(file_, capacity, [this](std::size_t lines) {
          report(std::to_string(lines) + " lines were not written");
      }) {
    Ringlog::TraceHandle::sinkIs([this](std::string_view line) { say(Severity::debug, line); });
}

LiveMessages::~LiveMessages() {
    Ringlog::TraceHandle::sinkIs({});
    queue_.finish();
}

void LiveMessages::report(std::string_view message, Severity severity) {
    say(severity, "directnet: " + printable(message));
}

void LiveMessages::say(Severity severity, std::string_view text) {
    std::string line = severityPrefix(severity);
    line += timestamps_ ? stamped(text, false) : std::string(text);
    line += '\n';
    queue_.forgiveError(); // a disk that was full may have room again
    queue_.append(line);
    queue_.flush();
}

} // namespace Agent
