#include "platform/interface/AllIntfStatusLocalDir.h"

#include "platform/orb/attribute/DefineType.h"

namespace Interface {

ORB_DEFINE_TYPE(AllIntfStatusLocalDir)

} // namespace Interface
