#include "platform/ip/Status.h"

#include "platform/orb/attribute/DefineType.h"

namespace Ip {

ORB_DEFINE_TYPE(Status)

} // namespace Ip
