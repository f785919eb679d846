#pragma once

#include <utility>

#include "platform/interface/IntfStatusAndDeviceName.h"
#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/value/Name.h"

namespace Interface {

/// The kernel devices of one network namespace that count as present.
class DeviceIntfStatusDir : public Orb::Entity {
    ORB_ENTITY(DeviceIntfStatusDir, "Interface::DeviceIntfStatusDir")
    ORB_CONSTRUCTOR((Orb::Name, name))
    ORB_MAP(259, Lanx::IntfId, IntfStatusAndDeviceName, intfStatusAndDeviceName)

  public:
    explicit DeviceIntfStatusDir(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Interface
