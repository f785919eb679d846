#pragma once

#include "platform/orb/value/Error.h"

#include <string>

namespace Agent {

/// The operating system refused something the device cannot do without.
class SystemError : public Orb::Error {
  public:
    /// `what` failed with the error number `code`; the text is "WHAT: MESSAGE".
    SystemError(const std::string& what, int code);

    int code() const noexcept { return code_; }

  private:
    int code_;
};

} // namespace Agent
