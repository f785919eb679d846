#include "directnet/leak/CrLeakSm.h"

#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

namespace {

DIRECTNET_TRACE_UNIT("CrLeakSm");

/// Visits every leak; leaks may come and go meanwhile.
template <typename Visit>
void forEachLeak(const RouteLeakedFromVrf& leaks, Visit visit) {
    Orb::forEachKey(leaks.destVrfId(), [&](const Lanx::IpGenPrefix& prefix) {
        for (const auto destVrfId : Orb::keysOf(*leaks.destVrfId().find(prefix))) {
            visit(LeakedPrefix(prefix, destVrfId));
        }
    });
}

} // namespace

ORB_DEFINE_TYPE(CrLeakSm)
ORB_DEFINE_TYPE(CrLeakSm::OrbRouteLeakedFromVrf)

void CrLeakSm::OrbRouteLeakedFromVrf::notifierIs(Orb::Ptr<const RouteLeakedFromVrf> leaks) {
    SourceVrfReactor::notifierIs(std::move(leaks));
    handleInitialized();
}

CrLeakSm::CrLeakSm(Arguments arguments) : arguments_(std::move(arguments)), orbCrLeakStatus_(this) {
    orbCrLeakStatus_.notifierIs(crLeakStatus());
    handleInitialized();
}

void CrLeakSm::handleInitialized() {
    if (initialized()) {
        DIRECTNET_TRACE(8, "already initialized");
        return;
    }
    initializedIs(true);
    for (const auto& leaks : Orb::objectsOf(crLeakStatus()->leakedRouteBySourceVrf())) {
        routeLeakedFromVrfIs(leaks);
    }
}

// The copy's leaks go one by one, each to be withdrawn, before the copy itself.
void CrLeakSm::handleSourceVrf(const DirectNetLeakStatus& status, VrfId sourceVrfId) {
    if (const auto* leaks = status.leakedRouteBySourceVrf(sourceVrfId)) {
        routeLeakedFromVrfIs(Orb::Ptr<const RouteLeakedFromVrf>(leaks));
        return;
    }
    routeLeakedFromVrfDel(sourceVrfId);
    const Orb::Ptr<RouteLeakedFromVrf> copy(
        crLeakLocalStatus()->leakedRouteBySourceVrf(sourceVrfId));
    if (copy != nullptr) {
        forEachLeak(*copy, [&copy](const LeakedPrefix& leaked) {
            copy->destVrfIdDel(leaked.genPrefix(), leaked.destVrfId());
        });
        crLeakLocalStatus()->leakedRouteBySourceVrfDel(sourceVrfId);
    }
}

void CrLeakSm::handleLeaks(const RouteLeakedFromVrf& leaks) {
    const Orb::Ptr<RouteLeakedFromVrf> copy(
        crLeakLocalStatus()->leakedRouteBySourceVrfIs(leaks.sourceVrfId()));
    const auto handle = [&](const LeakedPrefix& leaked) { handleLeakedPrefix(leaks, leaked); };
    forEachLeak(*copy, handle);
    forEachLeak(leaks, handle);
}

void CrLeakSm::handleLeakedPrefix(const RouteLeakedFromVrf& leaks, const LeakedPrefix& leaked) {
    const Orb::Ptr<RouteLeakedFromVrf> copy(
        crLeakLocalStatus()->leakedRouteBySourceVrfIs(leaks.sourceVrfId()));
    if (leaks.leaks(leaked.genPrefix(), leaked.destVrfId())) {
        copy->destVrfIdIs(leaked.genPrefix(), leaked.destVrfId());
    } else {
        copy->destVrfIdDel(leaked.genPrefix(), leaked.destVrfId());
    }
}

} // namespace Routing::DirectNet
