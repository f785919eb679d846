#pragma once

#include <string>

namespace Agent {

/// How bad what a message says is, by which a journal sorts messages.
enum class Severity { error = 3, warning = 4, debug = 7 };

/// What a line on standard error begins with: "<4>" where standard error is the journal's own
/// stream, which reads that and takes it away; nothing anywhere else.
std::string severityPrefix(Severity severity);

} // namespace Agent
