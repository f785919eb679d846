#pragma once

#include <string>
#include <sys/un.h>

#include "agent/base/FileDescriptor.h"

namespace Agent {

/// Where an agent listens unless told otherwise: in the runtime folder; empty if there is none.
/// Each network namespace has a place of its own, since each may have an agent.
std::string defaultSocketPath();

/// The socket address of a path. Throws FailureError if it is too long for one.
sockaddr_un socketAddress(const std::string& path);

/// Connects a stream socket to whoever listens at the path. Returns 0 or the error number. Throws
/// FailureError for a path that is too long.
int connectSocket(const FileDescriptor& file, const std::string& path);

} // namespace Agent
