#include "platform/interface/KernelNetInfo.h"

#include "platform/orb/attribute/DefineType.h"

namespace KernelNetInfo {

ORB_DEFINE_TYPE(Status)
ORB_REGISTER(KernelNetInfoStatus, Status, 0, 0)

} // namespace KernelNetInfo
