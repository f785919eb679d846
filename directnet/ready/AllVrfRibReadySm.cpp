#include "directnet/ready/AllVrfRibReadySm.h"

#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/Clock.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(AllVrfRibReadySm)
ORB_DEFINE_TYPE(AllVrfRibReadySm::OrbVrfReadyStatus)
ORB_REGISTER(AllVrfRibReadySm, AllVrfRibReadySm, unitRibReadySm, 0)

namespace {

DIRECTNET_TRACE_UNIT("RibReadySm");

constexpr const char* adding = ": Adding protoVrfStatus entity for vrf:";
constexpr const char* deleting = ": Deleting protoVrfStatus entity for vrf:";

} // namespace

void AllVrfRibReadySm::OrbAllVrfRibReady::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == Rib::AllVrfRibReady::vrfAttribute) {
        owner()->handleVrfRibReady(Orb::keyAs<L3::VrfName>(key));
    }
}

void AllVrfRibReadySm::OrbAllVrfReadyStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == AllVrfReadyStatus::vrfReadyStatusAttribute) {
        owner()->handleVrfReadyStatus(Orb::keyAs<L3::VrfName>(key));
    }
}

AllVrfRibReadySm::OrbVrfReadyStatus::OrbVrfReadyStatus(AllVrfRibReadySm* sm,
                                                       Orb::Ptr<const VrfReadyStatus> status)
    : MemberReactor(sm) {
    attach(std::move(status));
}

void AllVrfRibReadySm::OrbVrfReadyStatus::notifierIs(Orb::Ptr<const VrfReadyStatus> status) {
    MemberReactor::notifierIs(std::move(status));
    handleInitialized();
}

void AllVrfRibReadySm::OrbVrfReadyStatus::handleInitialized() {
    const L3::VrfName vrfName = fwkKey();
    DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 8, "VrfReadyStatus created for vrf: ", vrfName);
    initialized_ = true;
    owner()->maybeSignalVrfReady(vrfName);
}

void AllVrfRibReadySm::OrbVrfReadyStatus::onAttribute(Orb::AttributeId id, const void*) {
    if (id == VrfReadyStatus::v4DirectNetsReadyAttribute) {
        orb_handleVrfReadyStatus_v4DirectNetsReady();
    } else if (id == VrfReadyStatus::v6DirectNetsReadyAttribute) {
        orb_handleVrfReadyStatus_v6DirectNetsReady();
    }
}

void AllVrfRibReadySm::OrbVrfReadyStatus::orb_handleVrfReadyStatus_v4DirectNetsReady() {
    orb_handleVrfReadyStatus_v6DirectNetsReady();
}

void AllVrfRibReadySm::OrbVrfReadyStatus::orb_handleVrfReadyStatus_v6DirectNetsReady() {
    owner()->maybeSignalVrfReady(L3::VrfName(fwkKey()));
}

AllVrfRibReadySm::AllVrfRibReadySm(Arguments arguments)
    : arguments_(std::move(arguments)), orbAllVrfRibReady_(this), orbAllVrfReadyStatus_(this) {
    orbAllVrfRibReady_.notifierIs(allVrfRibReady());
    orbAllVrfReadyStatus_.notifierIs(allVrfReadyStatus());
    handleInitialized();
    for (const auto& status : allVrfReadyStatus()->vrfReadyStatus()) {
        vrfReadyStatusIs(status);
    }
}

AllVrfRibReadySm::~AllVrfRibReadySm() {
    orbDoZombieReactors(true);
    vrfReadyStatusDelAll();
}

void AllVrfRibReadySm::handleInitialized() {
    if (initialized()) {
        DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 8, "already initialized");
        return;
    }
    DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 8, "Initializing AllVrfRibReadySm");
    for (const Orb::Name& name : Orb::keysOf(protoStatusDir()->entity())) {
        if (!isWaitedFor(name)) {
            DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 8, deleting, name.value());
            protoStatusDir()->entityDel(name);
        }
    }
    for (const L3::VrfName& vrfName : Orb::keysOf(allVrfRibReady()->vrf())) {
        DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 8, adding, vrfName);
        protoVrfStatus(vrfName);
    }
    initializedIs(true);
}

void AllVrfRibReadySm::handleVrfRibReady(const L3::VrfName& vrfName) {
    if (allVrfRibReady()->vrf().contains(vrfName)) {
        DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 8, adding, vrfName);
        protoVrfStatus(vrfName);
        maybeSignalVrfReady(vrfName);
    } else {
        DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 8, deleting, vrfName);
        protoStatusDir()->entityDel(Orb::Name(vrfName.value()));
    }
}

void AllVrfRibReadySm::handleVrfReadyStatus(const L3::VrfName& vrfName) {
    if (VrfReadyStatus* status = allVrfReadyStatus()->vrfReadyStatus(vrfName)) {
        vrfReadyStatusIs(Orb::Ptr<const VrfReadyStatus>(status));
    } else {
        vrfReadyStatusDel(vrfName);
    }
}

bool AllVrfRibReadySm::vrfDirectNetsReady(const L3::VrfName& vrfName) const {
    const VrfReadyStatus* status = allVrfReadyStatus()->vrfReadyStatus(vrfName);
    if (status != nullptr && status->v4DirectNetsReady() && status->v6DirectNetsReady()) {
        return true;
    }
    DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 8, ": DirectNet not yet ready in vrf : ", vrfName);
    return false;
}

void AllVrfRibReadySm::maybeSignalVrfReady(const L3::VrfName& vrfName) {
    DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 8, "maybeSignalVrfReady");
    if (!allVrfRibReady()->vrf().contains(vrfName)) {
        return;
    }
    const Orb::Ptr<Rib::ProtoVrfStatus> status = protoVrfStatus(vrfName);
    // Signalled once: a time that is not exactly zero, a broken one included, stays.
    if (!vrfDirectNetsReady(vrfName) || !(status->readyTime() == 0)) {
        return;
    }
    DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 9, ": Marking DirectNet ready in vrf : ", vrfName);
    status->readyTimeIs(Orb::activityManager()->clock()->now());
    status->readyIs(true);
}

// What others left in the directory may have a name that no VRF can have.
bool AllVrfRibReadySm::isWaitedFor(const Orb::Name& name) const {
    return name.value().size() <= L3::VrfName::maxLength
           && allVrfRibReady()->vrf().contains(L3::VrfName(name.value()));
}

Orb::Ptr<Rib::ProtoVrfStatus> AllVrfRibReadySm::protoVrfStatus(const L3::VrfName& vrfName) {
    return protoStatusDir()->createEntity<Rib::ProtoVrfStatus>(Orb::Name(vrfName.value()));
}

} // namespace Routing::DirectNet
