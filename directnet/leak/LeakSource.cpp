#include "directnet/leak/LeakSource.h"

#include "directnet/leak/LeakRule.h"
#include "directnet/leak/LeakedRoutes.h"
#include "directnet/leak/ReceiveRouteLeakSm.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(LeakSource)
ORB_DEFINE_TYPE(LeakSource::OrbIntfIdsByPrefix)

LeakSource::LeakSource(ReceiveRouteLeakSm* sm, Orb::Ptr<const IntfBacklog> backlog)
    : MemberReactor(sm),
      orbOwnAddresses4_(this, IntfViaSetKeyStatus::ownAddressesByIntfIdAttribute),
      orbOwnAddresses6_(this, IntfViaSetKeyStatus::ownAddressesByIntfIdAttribute) {
    interestIs(IntfBacklog::intfIdsByPrefixAttribute);
    attach(std::move(backlog));
}

void LeakSource::handleInitialized() {
    handleLeaking();
    for (const auto* status : {&owner()->crLeakLocalStatus4(), &owner()->crLeakLocalStatus6()}) {
        if (const auto* leaks = (*status)->leakedRouteBySourceVrf(notifier()->vrfId())) {
            Orb::forEachKey(leaks->destVrfId(),
                            [this](const Lanx::IpGenPrefix& prefix) { handlePrefix(prefix); });
        }
    }
    owner()->scheduleReview();
}

void LeakSource::handleLeaking() {
    const bool leaks = owner()->leaks(notifier()->vrfId());
    hasNotificationActiveIs(leaks);
    if (leaks == (orbOwnAddresses4_.notifier() != nullptr)) {
        return;
    }
    using Status = Orb::Ptr<const IntfViaSetKeyStatus>;
    orbOwnAddresses4_.notifierIs(leaks ? Status(notifier()->intfViaSetKeyStatus4()) : nullptr);
    orbOwnAddresses6_.notifierIs(leaks ? Status(notifier()->intfViaSetKeyStatus6()) : nullptr);
}

void LeakSource::orbDoZombieReactors(bool zombie) {
    const bool goes = zombie && !orbMarkedForDeletion() && !owner()->orbMarkedForDeletion();
    MemberReactor::orbDoZombieReactors(zombie);
    if (goes) {
        handleDelete();
    }
}

// --- Contributors.

void LeakSource::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == IntfBacklog::intfIdsByPrefixAttribute) {
        handlePrefix(Orb::keyAs<Lanx::IpGenPrefix>(key));
    }
}

// Contributors that are there already are leaked by whoever had the prefix followed.
void LeakSource::handlePrefix(const Lanx::IpGenPrefix& prefix) {
    const bool leaked = owner()->destinations(notifier()->vrfId(), prefix) != nullptr;
    IntfIdSet* set = leaked ? notifier()->intfIdsByPrefix(prefix) : nullptr;
    const OrbIntfIdsByPrefix* followed = intfIdsByPrefix(prefix);
    if (followed != nullptr && followed->notifier() != set) {
        noteVirtuals(*followed->notifier(), false);
    }
    if (set != nullptr) {
        intfIdsByPrefixIs(Orb::Ptr<const IntfIdSet>(set));
        noteVirtuals(*set, true);
    } else if (followed != nullptr) {
        intfIdsByPrefixDel(prefix);
    }
}

LeakSource::OrbIntfIdsByPrefix::OrbIntfIdsByPrefix(LeakSource* source,
                                                   Orb::Ptr<const IntfIdSet> set)
    : MemberReactor(source) {
    attach(std::move(set));
}

void LeakSource::OrbIntfIdsByPrefix::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == IntfIdSet::intfIdAndAddrAttribute) {
        const IntfIdAndAddr iiaa = Orb::keyAs<IntfIdAndAddr>(key);
        const bool added = notifier()->intfIdAndAddr().find(iiaa) != nullptr;
        owner()->handleIntfIdAndAddr(notifier()->genPrefix(), iiaa, added);
    }
}

void LeakSource::handleIntfIdAndAddr(const Lanx::IpGenPrefix& prefix, const IntfIdAndAddr& iiaa,
                                     bool added) {
    noteVirtual(iiaa, added);
    owner()->handleContributor(*notifier(), prefix, iiaa);
}

// --- Virtual addresses of interfaces that have, or have not, addresses of their own.

void LeakSource::noteVirtual(const IntfIdAndAddr& contributor, bool contributes) {
    if (!contributor.isVirtual() || !isOwnSubnet(contributor)) {
        return;
    }
    if (contributes) {
        virtuals_.tryInsert(contributor.intfId()).first->insertOrAssign(contributor, true);
    } else if (auto* virtuals = virtuals_.find(contributor.intfId())) {
        virtuals->erase(contributor);
        if (virtuals->empty()) {
            virtuals_.erase(contributor.intfId());
        }
    }
}

void LeakSource::noteVirtuals(const IntfIdSet& set, bool contribute) {
    for (const auto& [contributor, viaSetKey] : set.intfIdAndAddr()) {
        noteVirtual(contributor, contribute);
    }
}

void LeakSource::OrbOwnAddresses::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == IntfViaSetKeyStatus::ownAddressesByIntfIdAttribute) {
        owner()->handleOwnAddresses(Orb::keyAs<Lanx::IntfId>(key), *notifier());
    }
}

// Counts between one and many change nothing, but cost no more than finding that out.
void LeakSource::handleOwnAddresses(Lanx::IntfId intfId, const IntfViaSetKeyStatus& status) {
    const auto* virtuals = virtuals_.find(intfId);
    if (virtuals == nullptr || status.ownAddressesByIntfId(intfId) > 1) {
        return;
    }
    for (const IntfIdAndAddr& contributor : Orb::keysOf(*virtuals)) {
        owner()->handleContributor(*notifier(), contributor.addrWithMask().subnet(), contributor);
    }
}

// --- The end of the VRF.

// Contributors that a machine of the VRF put there were withdrawn by it; others are still there.
void LeakSource::handleDelete() {
    const Orb::Ptr<IntfBacklog> backlog(const_cast<IntfBacklog*>(notifier()));
    for (const auto& followed : Orb::objectsOf(intfIdsByPrefix())) {
        const Orb::Ptr<const IntfIdSet> set(followed->notifier());
        for (const IntfIdAndAddr& contributor : Orb::keysOf(set->intfIdAndAddr())) {
            owner()->handleContributor(*backlog, set->genPrefix(), contributor);
        }
    }
    for (const IntfIdAndAddr& route : leakedRoutes(*backlog)) {
        if (const auto* source = owner()->intfBacklogByVrf()->intfBacklog(route.sourceVrfId())) {
            owner()->delLeakedReceiveRoute(route.intfId(), route.addrWithMask(), *source, *backlog);
        }
    }
}

} // namespace Routing::DirectNet
