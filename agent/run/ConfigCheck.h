#pragma once

#include <functional>
#include <string>

#include "agent/run/LiveDevice.h"

namespace Agent {

/// Looks whether an agent with these options could use the configuration file, which may be empty
/// for none, and changes nothing: links are only listed. Says which of the VRFs that the
/// configuration names are not there. Throws BadInputError where it could not be used.
void checkConfig(const LiveDevice::Options& options, const std::string& configFile,
                 const std::function<void(const std::string& message)>& report);

} // namespace Agent
