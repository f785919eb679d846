#pragma once

#include <string>
#include <sys/un.h>

namespace Agent {

/// Where an agent listens unless told otherwise: in the runtime folder; empty if there is none.
std::string defaultSocketPath();

/// The socket address of a path. Throws FailureError if it is too long for one.
sockaddr_un socketAddress(const std::string& path);

} // namespace Agent
