#include "platform/interface/AllIntfStatusLocalDir.h"

#include "platform/orb/DefineType.h"

namespace Interface {

ORB_DEFINE_TYPE(AllIntfStatusLocalDir)

} // namespace Interface
