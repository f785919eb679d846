#include "agent/base/SystemError.h"

#include <system_error>

namespace Agent {

SystemError::SystemError(const std::string& what, int code)
    : Orb::Error(what + ": " + std::generic_category().message(code)), code_(code) {}

} // namespace Agent
