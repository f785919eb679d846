#include "platform/routing/RouteLeakedFromVrf.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing {

ORB_DEFINE_TYPE(RouteLeakedFromVrf)

bool RouteLeakedFromVrf::leaks(const Lanx::IpGenPrefix& prefix, VrfId destVrfId) const {
    const DestVrfIds* destinations = byPrefix_.find(prefix);
    return destinations != nullptr && destinations->find(destVrfId) != nullptr;
}

void RouteLeakedFromVrf::destVrfIdIs(const Lanx::IpGenPrefix& prefix, VrfId destVrfId) {
    DestVrfIds& destinations = *byPrefix_.tryInsert(prefix).first;
    if (destinations.insertOrAssign(destVrfId, true)) {
        const LeakedPrefix leaked(prefix, destVrfId);
        notify(destVrfIdAttribute, &leaked);
    }
}

void RouteLeakedFromVrf::destVrfIdDel(const Lanx::IpGenPrefix& prefix, VrfId destVrfId) {
    const LeakedPrefix leaked(prefix, destVrfId);
    DestVrfIds* destinations = byPrefix_.find(prefix);
    if (destinations == nullptr || !destinations->erase(destVrfId)) {
        return;
    }
    if (destinations->empty()) {
        byPrefix_.erase(leaked.genPrefix());
    }
    notify(destVrfIdAttribute, &leaked);
}

} // namespace Routing
