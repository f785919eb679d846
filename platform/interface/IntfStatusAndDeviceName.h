#pragma once

#include <string>

#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Value.h"

namespace Interface {

/// An interface and the kernel device that it is. The default is no device.
class IntfStatusAndDeviceName {
    ORB_VALUE(IntfStatusAndDeviceName, "Interface::IntfStatusAndDeviceName", (Lanx::IntfId, intfId),
              (std::string, deviceName))
};

} // namespace Interface
