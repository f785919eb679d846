#include "directnet/backlog/IntfIdSet.h"

#include "directnet/model/Units.h"
#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IntfIdSet)
ORB_REGISTER(IntfIdSet, IntfIdSet, unitIntfBacklog, 6)

} // namespace Routing::DirectNet
