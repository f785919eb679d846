#include "platform/interface/AllIntfStatusDir.h"

#include "platform/orb/attribute/DefineType.h"

namespace Interface {

ORB_DEFINE_TYPE(AllIntfStatusDir)

} // namespace Interface
