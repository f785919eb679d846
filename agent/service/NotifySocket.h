#pragma once

#include <string>
#include <string_view>

#include "agent/base/FileDescriptor.h"

namespace Agent {

/// The way to whoever supervises this process as a service: datagrams of NAME=VALUE lines to the
/// socket that NOTIFY_SOCKET names, a path or, behind "@", an abstract name. Where the variable is
/// not set nobody is told anything.
class NotifySocket {
  public:
    /// Of a name as the variable has it; null and what is no name of a socket stand for nobody.
    explicit NotifySocket(const char* name);

    bool isThere() const { return static_cast<bool>(file_); }

    /// Sends one datagram, without waiting. Returns false if it is worth trying again: there is no
    /// room for it at present.
    bool send(std::string_view text) const;

  private:
    std::string address_; // as the system takes it, a zero byte before an abstract name
    FileDescriptor file_;
};

} // namespace Agent
