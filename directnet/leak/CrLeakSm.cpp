#include "directnet/leak/CrLeakSm.h"

#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

namespace {
DIRECTNET_TRACE_UNIT("CrLeakSm");
} // namespace

ORB_DEFINE_TYPE(CrLeakSm)
ORB_DEFINE_TYPE(CrLeakSm::OrbRouteLeakedFromVrf)

void CrLeakSm::OrbCrLeakStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == DirectNetLeakStatus::leakedRouteBySourceVrfId) {
        owner()->handleSourceVrf(Orb::keyAs<VrfId>(key));
    }
}

CrLeakSm::OrbRouteLeakedFromVrf::OrbRouteLeakedFromVrf(CrLeakSm* sm,
                                                       Orb::Ptr<const RouteLeakedFromVrf> leaks)
    : InputMemberReactor(sm) {
    attach(std::move(leaks));
}

void CrLeakSm::OrbRouteLeakedFromVrf::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == RouteLeakedFromVrf::destVrfIdId) {
        owner()->handleLeakedPrefix(*notifier(), Orb::keyAs<LeakedPrefix>(key));
    }
}

void CrLeakSm::OrbRouteLeakedFromVrf::notifierIs(Orb::Ptr<const RouteLeakedFromVrf> leaks) {
    InputMemberReactor::notifierIs(std::move(leaks));
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

CrLeakSm::~CrLeakSm() {
    orbDoZombieReactors(true);
    routeLeakedFromVrfDelAll();
}

void CrLeakSm::handleSourceVrf(VrfId sourceVrfId) {
    if (const auto* leaks = crLeakStatus()->leakedRouteBySourceVrf(sourceVrfId)) {
        routeLeakedFromVrfIs(Orb::Ptr<const RouteLeakedFromVrf>(leaks));
    } else {
        routeLeakedFromVrfDel(sourceVrfId);
        doDeleteLeaks(sourceVrfId, nullptr);
        crLeakLocalStatus()->leakedRouteBySourceVrfDel(sourceVrfId);
    }
}

void CrLeakSm::handleSourceVrf(const RouteLeakedFromVrf& leaks) {
    crLeakLocalStatus()->leakedRouteBySourceVrfIs(leaks.sourceVrfId());
    doDeleteLeaks(leaks.sourceVrfId(), &leaks);
    Orb::forEachKey(leaks.destVrfId(), [&](const Lanx::IpGenPrefix& prefix) {
        if (const auto* destinations = leaks.destVrfId().find(prefix)) {
            for (const VrfId destVrfId : Orb::keysOf(*destinations)) {
                handleLeakedPrefix(leaks, LeakedPrefix(prefix, destVrfId));
            }
        }
    });
}

void CrLeakSm::handleLeakedPrefix(const RouteLeakedFromVrf& leaks, const LeakedPrefix& leaked) {
    auto* copy = crLeakLocalStatus()->leakedRouteBySourceVrf(leaks.sourceVrfId());
    if (copy == nullptr) {
        return;
    }
    const Orb::Ptr<RouteLeakedFromVrf> keep(copy);
    if (leaks.leaks(leaked.genPrefix(), leaked.destVrfId())) {
        copy->destVrfIdIs(leaked.genPrefix(), leaked.destVrfId());
    } else {
        copy->destVrfIdDel(leaked.genPrefix(), leaked.destVrfId());
    }
}

void CrLeakSm::doDeleteLeaks(VrfId sourceVrfId, const RouteLeakedFromVrf* except) {
    const Orb::Ptr<RouteLeakedFromVrf> copy(
        crLeakLocalStatus()->leakedRouteBySourceVrf(sourceVrfId));
    if (copy == nullptr) {
        return;
    }
    Orb::forEachKey(copy->destVrfId(), [&](const Lanx::IpGenPrefix& prefix) {
        const auto* destinations = copy->destVrfId().find(prefix);
        if (destinations == nullptr) {
            return;
        }
        for (const VrfId destVrfId : Orb::keysOf(*destinations)) {
            if (except == nullptr || !except->leaks(prefix, destVrfId)) {
                copy->destVrfIdDel(prefix, destVrfId);
            }
        }
    });
}

} // namespace Routing::DirectNet
