#pragma once

#include <ostream>
#include <string>

#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/attribute/Value.h"

namespace KernelNetInfo {

/// A kernel device as the kernel reports it.
class Device {
    ORB_VALUE(Device, "KernelNetInfo::Device", (std::string, name), (bool, running))
};

/// The kernel devices of one network namespace, running or not, by interface.
class Status : public Orb::Entity {
    ORB_ENTITY(Status, "KernelNetInfo::Status")
    ORB_MAP(258, Lanx::IntfId, Device, device)
};

} // namespace KernelNetInfo
