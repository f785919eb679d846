#include "directnet/backlog/IntfBacklogByVrf.h"

#include "directnet/model/Units.h"
#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IntfBacklogByVrf)
ORB_REGISTER(IntfBacklogByVrf, IntfBacklogByVrf, unitIntfBacklog, 3)

} // namespace Routing::DirectNet
