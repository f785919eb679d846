#include "agent/linux/SystemError.h"

#include <system_error>

namespace Agent::Linux {

SystemError::SystemError(const std::string& what, int code)
    : Orb::Error(what + ": " + std::generic_category().message(code)), code_(code) {}

} // namespace Agent::Linux
