#include "platform/routing/DirectNetLeakStatus.h"

#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/value/Error.h"
#include "platform/routing/LeakRecorder.h"

namespace Routing {

ORB_DEFINE_TYPE(DirectNetLeakStatus)
ORB_REGISTER(DirectNetLeakStatus, DirectNetLeakStatus, 0, 4)

void DirectNetLeakStatus::leakIs(const LeakedRoute& leak) {
    leakedRouteBySourceVrfIs(leak.sourceVrfId())->destVrfIdIs(leak.genPrefix(), leak.destVrfId());
}

void DirectNetLeakStatus::leakDel(const LeakedRoute& leak) {
    if (RouteLeakedFromVrf* leaks = leakedRouteBySourceVrf(leak.sourceVrfId())) {
        leaks->destVrfIdDel(leak.genPrefix(), leak.destVrfId());
        if (leaks->destVrfId().empty()) {
            leakedRouteBySourceVrfDel(leak.sourceVrfId());
        }
    }
}

void DirectNetLeakStatus::collectionCapacityIs(std::string_view collection, std::size_t) {
    throw Orb::RangeError("a table of leaks has no collection " + std::string(collection));
}

OrbMemtab::Table::Bond DirectNetLeakStatus::share(const Orb::Ptr<Vaultdb::Folder>& folder,
                                                  const Orb::String& path) {
    return Orb::makePtr<LeakRecorder>(folder, path, Orb::Ptr<DirectNetLeakStatus>(this));
}

} // namespace Routing
