#include "platform/interface/DeviceIntfStatusDir.h"

#include "platform/orb/attribute/DefineType.h"

namespace Interface {

ORB_DEFINE_TYPE(DeviceIntfStatusDir)

} // namespace Interface
