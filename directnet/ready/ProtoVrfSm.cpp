#include "directnet/ready/ProtoVrfSm.h"

#include <algorithm>
#include <set>

#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(ProtoVrfSm)
ORB_DEFINE_TYPE(ProtoVrfSm::OrbVrfReadyStatus)

void ProtoVrfSm::OrbAllVrfReadyStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == AllVrfReadyStatus::vrfReadyStatusAttribute) {
        owner()->handleVrf(Orb::keyAs<L3::VrfName>(key));
    }
}

void ProtoVrfSm::OrbProtoStatusDir::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == Orb::Dir::entityAttribute) {
        owner()->watchRib(Orb::keyAs<Orb::Name>(key));
        owner()->maybeClearLeftovers(); // nobody may wait any more for one that did not come
    }
}

void ProtoVrfSm::OrbProtoVrfStatus::onAttribute(Orb::AttributeId, const void*) {
    owner()->doUpdate(notifier()->name().value());
}

void ProtoVrfSm::OrbRoom::onAttribute(Orb::AttributeId id, const void*) {
    if (id == OrbMemtab::Table::roomAttribute) {
        owner()->doUpdateAll();
    }
}

ProtoVrfSm::OrbVrfReadyStatus::OrbVrfReadyStatus(ProtoVrfSm* sm,
                                                 Orb::Ptr<const VrfReadyStatus> status)
    : MemberReactor(sm) {
    attach(std::move(status));
}

void ProtoVrfSm::OrbVrfReadyStatus::onAttribute(Orb::AttributeId, const void*) {
    owner()->doUpdate(fwkKey());
}

ProtoVrfSm::ProtoVrfSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbAllVrfReadyStatus_(this), orbProtoStatusDir_(this),
      orbRoom_(this) {
    orbAllVrfReadyStatus_.notifierIs(allVrfReadyStatus());
    orbProtoStatusDir_.notifierIs(protoStatusDir());
    orbRoom_.notifierIs(protoVrfTable());
    handleInitialized();
}

ProtoVrfSm::~ProtoVrfSm() {
    orbDoZombieReactors(true);
    vrfReadyStatusDelAll();
    for (const auto& present : vrfId()) {
        protoVrfTable()->vrfDel(present.value());
    }
}

void ProtoVrfSm::handleInitialized() {
    leftoversClearedIs(!hasLeftovers());
    forgetReadiness();
    for (const Orb::Name& name : Orb::keysOf(protoStatusDir()->entity())) {
        watchRib(name);
    }
    for (const auto& status : Orb::objectsOf(allVrfReadyStatus()->vrfReadyStatus())) {
        handleVrf(status->vrfName());
    }
}

/// An earlier run's routes are there, but nobody has said of this run's that they are complete.
void ProtoVrfSm::forgetReadiness() {
    std::vector<Rib::ProtoVrf> found;
    for (const Rib::ProtoVrf& vrf : protoVrfTable()->vrfs()) {
        found.push_back({vrf.name, vrf.id, false, false, {}});
    }
    for (const Rib::ProtoVrf& vrf : found) {
        protoVrfTable()->vrfIs(vrf);
    }
}

const Rib::ProtoVrfStatus* ProtoVrfSm::rib(const Orb::Name& name) const {
    return dynamic_cast<const Rib::ProtoVrfStatus*>(protoStatusDir()->entity(name));
}

void ProtoVrfSm::watchRib(const Orb::Name& name) {
    ribs_.erase(name);
    if (const Rib::ProtoVrfStatus* status = rib(name)) {
        ribs_.try_emplace(name, this)
            .first->second.notifierIs(Orb::Ptr<const Rib::ProtoVrfStatus>(status));
    }
    if (name.value().size() <= L3::VrfName::maxLength) {
        doUpdate(name.value());
    }
}

void ProtoVrfSm::handleVrf(const L3::VrfName& name) {
    const VrfReadyStatus* status = allVrfReadyStatus()->vrfReadyStatus(name);
    if (status != nullptr) {
        vrfReadyStatusIs(Orb::Ptr<const VrfReadyStatus>(status));
        doUpdate(name);
        return;
    }
    vrfReadyStatusDel(name);
}

void ProtoVrfSm::handleVrfGone(const L3::VrfName& name) {
    if (vrfId().contains(name)) {
        const VrfId id = vrfId(name);
        vrfIdDel(name);
        protoVrfTable()->vrfDel(id);
    }
}

void ProtoVrfSm::doUpdate(const L3::VrfName& name) {
    const VrfReadyStatus* status = allVrfReadyStatus()->vrfReadyStatus(name);
    if (status == nullptr || nameToIdMapWrapper() == nullptr) {
        return;
    }
    const VrfId id = vrfId().contains(name) ? vrfId(name) : nameToIdMapWrapper()->vrfId(name);
    const auto present = protoVrfTable()->vrf(id);
    if (present && present->name != name && vrfId().contains(present->name)) {
        return; // the id is another VRF's, and this one gets no container
    }
    if (!protoVrfTable()->hasRoomFor(id)) {
        protoVrfTable()->awaitRoom();
        return;
    }
    Rib::ProtoVrf vrf{name, id, status->v4DirectNetsReady(), status->v6DirectNetsReady(), {}};
    if (const Rib::ProtoVrfStatus* record = rib(Orb::Name(name.value()))) {
        vrf.rib = Rib::ProtoVrf::Rib{record->ready(), record->readyTime()};
    }
    vrfIdIs(name, id);
    protoVrfTable()->vrfIs(vrf);
    maybeClearLeftovers();
}

void ProtoVrfSm::doUpdateAll() {
    for (const auto& status : Orb::objectsOf(allVrfReadyStatus()->vrfReadyStatus())) {
        doUpdate(status->vrfName());
    }
}

bool ProtoVrfSm::hasLeftovers() const {
    return protoVrfTable()->size() + route4Config()->size() + route6Config()->size()
               + ipv4ViaConfig()->size() + ipv6ViaConfig()->size()
           != 0;
}

bool ProtoVrfSm::isComplete() const {
    const auto& vrfs = allVrfReadyStatus()->vrfReadyStatus();
    // One that is not in the table, for want of room, would look like a leftover.
    const auto isReady = [this](const auto& status) {
        return status->v4DirectNetsReady() && status->v6DirectNetsReady()
               && vrfId().contains(status->vrfName());
    };
    const auto names = Orb::keysOf(allVrfRibReady()->vrf());
    const auto isDeclared = [this](const L3::VrfName& name) {
        const Rib::ProtoVrfStatus* status = rib(Orb::Name(name.value()));
        return status != nullptr && status->ready();
    };
    return !vrfs.empty() && std::all_of(vrfs.begin(), vrfs.end(), isReady)
           && std::all_of(names.begin(), names.end(), isDeclared);
}

void ProtoVrfSm::maybeClearLeftovers() {
    if (leftoversCleared() || !isComplete()) {
        return;
    }
    leftoversClearedIs(true);
    std::set<VrfId> ids;
    for (const Rib::ProtoVrf& vrf : protoVrfTable()->vrfs()) {
        ids.insert(vrf.id);
    }
    for (const auto& found : {route4Config()->vrfIds(), route6Config()->vrfIds(),
                              ipv4ViaConfig()->vrfIds(), ipv6ViaConfig()->vrfIds()}) {
        ids.insert(found.begin(), found.end());
    }
    for (const auto& present : vrfId()) {
        ids.erase(present.value());
    }
    for (const VrfId id : ids) {
        route4Config()->doDeleteRoutesForVrf(id);
        route6Config()->doDeleteRoutesForVrf(id);
        ipv4ViaConfig()->doDeleteViasForVrf(id);
        ipv6ViaConfig()->doDeleteViasForVrf(id);
        protoVrfTable()->vrfDel(id);
    }
}

} // namespace Routing::DirectNet
