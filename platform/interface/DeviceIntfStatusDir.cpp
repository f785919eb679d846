#include "platform/interface/DeviceIntfStatusDir.h"

#include "platform/orb/DefineType.h"

namespace Interface {

ORB_DEFINE_TYPE(DeviceIntfStatusDir)

} // namespace Interface
