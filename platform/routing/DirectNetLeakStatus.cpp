#include "platform/routing/DirectNetLeakStatus.h"

#include "platform/memtab/Following.h"
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

OrbMemtab::Table::Bond DirectNetLeakStatus::follow(const Orb::Ptr<Vaultdb::Folder>& folder,
                                                   const Orb::String& path) {
    using Form = Rib::LeakForm;
    const Orb::Ptr<DirectNetLeakStatus> status(this);
    return Orb::makePtr<OrbMemtab::Following<Form::Record>>(
        folder, path, [status](const Form::Record* before, const Form::Record* after) {
            if (after != nullptr) {
                status->leakIs(Form::value(*after));
            } else {
                status->leakDel(Form::value(*before));
            }
        });
}

} // namespace Routing
