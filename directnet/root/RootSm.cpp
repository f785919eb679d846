#include "directnet/root/RootSm.h"

#include "directnet/model/ContainerRule.h"
#include "directnet/model/Trace.h"
#include "directnet/root/TraceUnit.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/object/Decision.h"
#include "platform/orb/value/Assert.h"
#include "platform/orb/value/FirstError.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(RootSm)
ORB_DEFINE_TYPE(RootSm::VrfStatusLocalSm)
ORB_REGISTER(RootSm, RootSm, unitDirectNet, 4)
ORB_REGISTER(VrfStatusLocalSm, RootSm::VrfStatusLocalSm, unitDirectNet, 5)

void RootSm::OrbNameToIdMapWrapper::onAttribute(Orb::AttributeId id, const void*) {
    if (id == NameToIdMapWrapper::generationAttribute) {
        owner()->handleRibVrfNameToIdMap();
    } else {
        owner()->orb_NameToIdMapInIs(notifier()->nameToIdMap());
    }
}

void RootSm::OrbOrb_NameToIdMapIn::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == NameToIdMap::vrfIdAttribute) {
        owner()->doCreateOrDeleteContainer(Orb::keyAs<L3::VrfName>(key));
    }
}

void RootSm::OrbOrb_NameToIdMapIn::onRemembered(Orb::AttributeId id, const void* key) {
    if (id == NameToIdMap::vrfIdAttribute) {
        owner()->noteWhatIsNotDue(Orb::keyAs<L3::VrfName>(key));
    }
}

void RootSm::OrbAllVrfStatusLocal::onAttribute(Orb::AttributeId id, const void* key) {
    if (id != Ip::AllVrfStatusLocal::vrfAttribute) {
        return;
    }
    const L3::VrfName& name = Orb::keyAs<L3::VrfName>(key);
    if (const Ip::VrfStatusLocal* status = notifier()->vrf(name)) {
        owner()->vrfStatusLocalIs(Orb::Ptr<const Ip::VrfStatusLocal>(status));
    } else {
        owner()->vrfStatusLocalDel(name);
    }
}

void RootSm::OrbAllVrfStatusLocal::onRemembered(Orb::AttributeId id, const void* key) {
    if (id == Ip::AllVrfStatusLocal::vrfAttribute) {
        owner()->noteWhatIsNotDue(Orb::keyAs<L3::VrfName>(key));
    }
}

RootSm::VrfStatusLocalSm::VrfStatusLocalSm(RootSm* root, Orb::Ptr<const Ip::VrfStatusLocal> status)
    : InputMemberReactor(root) {
    attach(std::move(status));
}

void RootSm::VrfStatusLocalSm::onAttribute(Orb::AttributeId id, const void*) {
    if (id == Ip::VrfStatusLocal::stateAttribute) {
        handleVrfStatusLocal();
    }
}

void RootSm::VrfStatusLocalSm::onRemembered(Orb::AttributeId id, const void*) {
    if (id == Ip::VrfStatusLocal::stateAttribute) {
        owner()->noteWhatIsNotDue(vrfName());
    }
}

void RootSm::VrfStatusLocalSm::notifierIs(Orb::Ptr<const Ip::VrfStatusLocal> status) {
    InputMemberReactor::notifierIs(std::move(status));
    handleVrfStatusLocal();
}

void RootSm::VrfStatusLocalSm::handleVrfStatusLocal() {
    owner()->doCreateOrDeleteContainer(L3::VrfName(vrfName()));
}

// A reactor that goes for itself tells the root; one that goes with the root has nobody to tell.
void RootSm::VrfStatusLocalSm::orbDoZombieReactors(bool zombie) {
    if (zombie == orbMarkedForDeletion()) {
        return;
    }
    InputMemberReactor::orbDoZombieReactors(zombie);
    if (zombie && !owner()->orbMarkedForDeletion()) {
        owner()->orb_handleVrfStatusLocal(*this);
    }
}

RootSm::RootSm(Arguments arguments)
    : arguments_(std::move(arguments)), mount_(entityManager()), orbNameToIdMapWrapper_(this),
      orbAllVrfStatusLocal_(this) {
    try {
        Orb::decide([this] { doStart(); });
    } catch (...) {
        doUndoStart();
        throw;
    }
}

// Whoever is told of what goes may throw; a destructor keeps that to itself.
RootSm::~RootSm() {
    try {
        Orb::decide([this] { doRelease(); });
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

// The last reference may go in the middle of a decision of some machine of the root's.
void RootSm::handleZeroRef() {
    if (!Orb::decisionUnderWay()) {
        Entity::handleZeroRef();
    } else if (!std::exchange(dying_, true)) {
        Orb::Detail::Turn::current().remember(this, [this] { Entity::handleZeroRef(); });
    }
}

void RootSm::orbDoZombieReactors(bool zombie) {
    Orb::Entity::orbDoZombieReactors(zombie);
    for (const auto& sm : vrfStatusLocal()) {
        sm->orbDoZombieReactors(zombie);
    }
}

Orb::Ptr<RootSm::OrbOrb_NameToIdMapIn>
RootSm::newOrb_NameToIdMapIn(const Orb::Ptr<NameToIdMap>& map) {
    auto reactor = Orb::makePtr<OrbOrb_NameToIdMapIn>(this);
    reactor->notifierIs(map);
    return reactor;
}

void RootSm::orb_NameToIdMapInIs(const Orb::Ptr<NameToIdMap>& map) {
    if (orbOrb_NameToIdMapIn_ == nullptr || orbOrb_NameToIdMapIn_->watched() == map.get()) {
        return;
    }
    orbOrb_NameToIdMapIn_->notifierIs(map);
    // A map that replaces another may lack names that have a container.
    const Orb::Ptr<VrfNameSet> names = containerNames();
    Orb::FirstError errors;
    Orb::forEachKey(names->vrfName(), [&](const L3::VrfName& name) {
        errors.attempt([&] { doCreateOrDeleteContainer(name); });
    });
    errors.attempt([this] { handleRibVrfNameToIdMap(); });
    errors.raise();
}

void RootSm::handleRibVrfNameToIdMap() {
    DIRECTNET_TRACE(8, "handleRibVrfNameToIdMap");
    if (nameToIdMapWrapper() == nullptr || nameToIdMapWrapper()->nameToIdMap() == nullptr) {
        DIRECTNET_TRACE(8, " nameToIdMap() not defined");
        return;
    }
    const Orb::Ptr<NameToIdMap> map = nameToIdMapWrapper()->nameToIdMap();
    Orb::FirstError errors; // one VRF that is refused is no reason to leave the others out
    Orb::forEachKey(map->vrfId(), [&](const L3::VrfName& name) {
        errors.attempt([&] { doCreateOrDeleteContainer(name); });
    });
    errors.raise();
}

ContainerRule RootSm::containerRule(const L3::VrfName& name) const {
    return {name, nameToIdMapWrapper().get(), *allVrfStatusLocal()};
}

void RootSm::doCreateOrDeleteContainer(const L3::VrfName& name) {
    Orb::decideInTurn(*this, [this, name] {
        DIRECTNET_RINGLOG(name);
        if (!initialized()) {
            DIRECTNET_TRACE(8, "init not complete VRF ", name);
            return;
        }
        // All of them: one that comes may have the id of one that went.
        Orb::forEachKey(wasNotDue_->vrfName(),
                        [this](const L3::VrfName& gone) { doDeleteContainer(gone); });
        const ContainerRule rule = containerRule(name);
        const bool due = rule.due();
        if (due) {
            DIRECTNET_TRACE(8, "All conditions met to create VRF ", name);
        } else {
            DIRECTNET_TRACE(8, rule.missing());
        }
        const bool exists = containerSm(name) != nullptr;
        if (due == exists) {
            DIRECTNET_TRACE(8, "no change, containerSm ", exists ? "exists" : "do not exist",
                            " for VRF ", name);
        } else if (!due) {
            doDeleteContainer(name);
        } else {
            const VrfId vrfId = nameToIdMapWrapper()->vrfId(name);
            DIRECTNET_TRACE(8, "adding containerSm VRF ", name);
            DIRECTNET_RINGLOG(" adding containerSm. vrfId=", vrfId);
            doCreateContainer(name, vrfId);
        }
    });
}

void RootSm::noteWhatIsNotDue(const L3::VrfName& name) {
    if (!containerRule(name).due()) {
        wasNotDue_->vrfNameIs(name, true);
    }
}

void RootSm::doCreateContainer(const L3::VrfName& name, VrfId vrfId) {
    try {
        createContainerParts(name, vrfId);
    } catch (...) {
        doDeleteContainer(name);
        doDeleteContainerParts(name, vrfId);
        throw;
    }
}

void RootSm::createContainerParts(const L3::VrfName& name, VrfId vrfId) {
    const Orb::Ptr<VrfReadyStatus> ready(allVrfReadyStatus()->vrfReadyStatusIs(name));
    const auto virtualIps = vrfVirtualIpStatusHelper()->findOrCreateVrfVirtualIpStatus(name);
    const auto virtualIps6 = vrfVirtualIp6StatusHelper()->findOrCreateVrfVirtualIpStatus(name);
    const Orb::Ptr<IntfBacklog> backlog(intfBacklogByVrf()->intfBacklogIs(name, vrfId));
    ORB_ASSERT(references() != 0, "references() != 0");
    containerSmIs(entityManager(), name, vrfId, viaSetConfig(), ipStatus(), ip6Status(), virtualIps,
                  virtualIps6, nameToIdMapWrapper(), allVrfStatusLocal(), allIntfStatusDir(),
                  allIntfStatusLocalDir(), intfStatusManagerRoot(), ipv4AllVrfRouteConfig(),
                  ipv6AllVrfRouteConfig(), ipv4AllVrfViaConfig(), ipv6AllVrfViaConfig(),
                  intfViaSetConfig(), backlog, grState(), ready);
}

// What was made for a container that could not be made. Nobody watches the tables, so they stay
// only for what they hold; and a backlog of that id may be another VRF's, for which this one was
// refused.
void RootSm::doDeleteContainerParts(const L3::VrfName& name, VrfId vrfId) {
    const auto deleteEmpty = [&name](auto& tables) {
        const auto* table = tables.vrfVirtualIpStatus(name);
        if (table != nullptr && table->virtualIp().empty()) {
            tables.vrfVirtualIpStatusDel(name);
        }
    };
    deleteEmpty(*allVrfVirtualIpStatus());
    deleteEmpty(*allVrfVirtualIp6Status());
    const IntfBacklog* backlog = intfBacklogByVrf()->intfBacklog(vrfId);
    if (backlog != nullptr && backlog->vrfName() == name) {
        intfBacklogByVrf()->intfBacklogDel(vrfId);
    }
}

void RootSm::doDeleteContainer(const L3::VrfName& name) {
    Orb::decideInTurn(*this, [this, name] {
        DIRECTNET_TRACE(8, "deleting containerSm VRF ", name);
        DIRECTNET_RINGLOG(" deleting containerSm");
        wasNotDue_->vrfNameDel(name);
        allVrfReadyStatus()->vrfReadyStatusDel(name);
        const ContainerSm* container = containerSm(name);
        if (container == nullptr) {
            protoVrfSm()->handleVrfGone(name);
            return;
        }
        ORB_ASSERT(container->references() == 1, "container->references() == 1");
        const VrfId vrfId = container->vrfId();
        containerSmDel(name);
        vrfVirtualIpStatusHelper()->maybeDeleteVrfVirtualIpStatus(name.value());
        vrfVirtualIp6StatusHelper()->maybeDeleteVrfVirtualIpStatus(name.value());
        intfBacklogByVrf()->intfBacklogDel(vrfId);
        protoVrfSm()->handleVrfGone(name);
    });
}

Orb::Ptr<VrfNameSet> RootSm::containerNames() const {
    auto names = Orb::makePtr<VrfNameSet>();
    for (const auto& container : containerSm()) {
        names->vrfNameIs(container->vrfName(), true);
    }
    return names;
}

void RootSm::doDeleteContainer() {
    Orb::decideInTurn(*this, [this] {
        DIRECTNET_TRACE(8, "deleting all VRF containerSms");
        const Orb::Ptr<VrfNameSet> names = containerNames();
        Orb::forEachKey(names->vrfName(),
                        [this](const L3::VrfName& name) { doDeleteContainer(name); });
    });
}

void RootSm::handleDelete() {
    DIRECTNET_DUALLOG(8, "handleDelete");
    if (Orb::decisionUnderWay()) {
        // By then the host may have let go of its reference; there is the one of what waits.
        Orb::decideAfterwards(*this, [this] {
            ORB_ASSERT(references() <= 2, "references() == 1");
            doStop();
        });
        return;
    }
    ORB_ASSERT(references() == 1, "references() == 1");
    const Orb::Ptr<RootSm> keep(this);
    Orb::decide([this] { doStop(); });
}

// The default VRF needs no local status, so it comes back at once.
void RootSm::orb_handleVrfStatusLocal(const VrfStatusLocalSm& sm) {
    const L3::VrfName name = sm.vrfName();
    doDeleteContainer(name);
    if (containerRule(name).due()) {
        doCreateOrDeleteContainer(name);
    }
}

} // namespace Routing::DirectNet
