// How the leak receiver follows leaks, backlogs and contributors one by one.

#include <algorithm>

#include "directnet/leak/LeakableContributor.h"
#include "directnet/leak/ReceiveRouteLeakSm.h"
#include "directnet/model/Trace.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

namespace {

/// Whether a virtual address of the interface contributes to the prefix.
bool hasVirtual(const IntfIdSet& set, Lanx::IntfId intfId) {
    return std::any_of(
        set.intfIdAndAddr().begin(), set.intfIdAndAddr().end(), [intfId](const auto& contributor) {
            const IntfIdAndAddr& entry = contributor.key();
            return entry.isVirtual() && entry.intfId() == intfId && isLocalConnected(entry);
        });
}

} // namespace

// --- The leaks of one source VRF.

void ReceiveRouteLeakSm::OrbLeakedRoute::handleInitialized() {
    if (notifier()->destVrfId().empty()) {
        return;
    }
    if (OrbIntfBacklog* backlog = owner()->intfBacklog(notifier()->sourceVrfId())) {
        Orb::forEachKey(notifier()->destVrfId(),
                        [&](const Lanx::IpGenPrefix& prefix) { backlog->handlePrefix(prefix); });
    }
    owner()->scheduleReview();
}

void ReceiveRouteLeakSm::OrbLeakedRoute::notifierIs(Orb::Ptr<const RouteLeakedFromVrf> leaks) {
    MemberReactor::notifierIs(std::move(leaks));
    handleInitialized();
}

void ReceiveRouteLeakSm::OrbLeakedRoute::onAttribute(Orb::AttributeId id, const void* key) {
    if (id != RouteLeakedFromVrf::destVrfIdId) {
        return;
    }
    const LeakedPrefix leaked = Orb::keyAs<LeakedPrefix>(key);
    const VrfId sourceVrfId = notifier()->sourceVrfId();
    if (OrbIntfBacklog* backlog = owner()->intfBacklog(sourceVrfId)) {
        backlog->handlePrefix(leaked.genPrefix());
    }
    owner()->handleLeakedRoute(sourceVrfId, leaked.genPrefix(), status(), leaked.destVrfId());
}

// What the source still leaked when it went from the status is withdrawn like leaks that end one
// by one; the status no longer lists it.
void ReceiveRouteLeakSm::OrbLeakedRoute::orbDoZombieReactors(bool zombie) {
    const bool goes = zombie && !orbMarkedForDeletion() && !owner()->orbMarkedForDeletion();
    MemberReactor::orbDoZombieReactors(zombie);
    if (!goes) {
        return;
    }
    const Orb::Ptr<const RouteLeakedFromVrf> leaks(notifier());
    Orb::forEachKey(leaks->destVrfId(), [&](const Lanx::IpGenPrefix& prefix) {
        for (const VrfId destVrfId : Orb::keysOf(*leaks->destVrfId().find(prefix))) {
            owner()->handleLeakedRoute(leaks->sourceVrfId(), prefix, status(), destVrfId);
        }
        if (OrbIntfBacklog* backlog = owner()->intfBacklog(leaks->sourceVrfId())) {
            backlog->handlePrefix(prefix);
        }
    });
}

// --- The backlog of one VRF.

ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfBacklog(ReceiveRouteLeakSm* sm,
                                                   Orb::Ptr<const IntfBacklog> backlog)
    : MemberReactor(sm), orbOwnAddresses4_(this, IntfViaSetKeyStatus::ownAddressesByIntfIdId),
      orbOwnAddresses6_(this, IntfViaSetKeyStatus::ownAddressesByIntfIdId) {
    orbOwnAddresses4_.notifierIs(backlog->intfViaSetKeyStatus4());
    orbOwnAddresses6_.notifierIs(backlog->intfViaSetKeyStatus6());
    interestIs(IntfBacklog::intfIdsByPrefixId);
    attach(std::move(backlog));
}

void ReceiveRouteLeakSm::OrbIntfBacklog::handleInitialized() {
    const VrfId vrfId = notifier()->vrfId();
    for (const Lanx::AddressFamily af : {Lanx::AddressFamily::ipv4, Lanx::AddressFamily::ipv6}) {
        if (const auto* leaks = owner()->crLeakLocalStatus(af).leakedRouteBySourceVrf(vrfId)) {
            Orb::forEachKey(leaks->destVrfId(),
                            [this](const Lanx::IpGenPrefix& prefix) { handlePrefix(prefix); });
        }
    }
    owner()->scheduleReview();
}

void ReceiveRouteLeakSm::OrbIntfBacklog::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == IntfBacklog::intfIdsByPrefixId) {
        handlePrefix(Orb::keyAs<Lanx::IpGenPrefix>(key));
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::orbDoZombieReactors(bool zombie) {
    const bool goes = zombie && !orbMarkedForDeletion();
    MemberReactor::orbDoZombieReactors(zombie);
    if (goes) {
        intfIdsByPrefixDelAll();
        if (!owner()->orbMarkedForDeletion()) {
            handleDelete();
        }
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::handlePrefix(const Lanx::IpGenPrefix& prefix) {
    const bool leaked = owner()->destinations(notifier()->vrfId(), prefix) != nullptr;
    IntfIdSet* set = leaked ? notifier()->intfIdsByPrefix(prefix) : nullptr;
    if (set != nullptr) {
        intfIdsByPrefixIs(Orb::Ptr<const IntfIdSet>(set));
    } else if (!intfIdsByPrefix().empty()) {
        intfIdsByPrefixDel(prefix);
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::handleIntfIdAndAddr(const Lanx::IpGenPrefix& prefix,
                                                             const IntfIdAndAddr& iiaa,
                                                             bool added) {
    if (!isLocalConnected(iiaa)) {
        return;
    }
    if (iiaa.isVirtual()) {
        const IntfIdSet* present = notifier()->intfIdsByPrefix(prefix);
        noteVirtual(prefix, iiaa.intfId(),
                    added || (present != nullptr && hasVirtual(*present, iiaa.intfId())));
    }
    const OrbIntfIdsByPrefix* reactor = intfIdsByPrefix(prefix);
    const auto* destinations = owner()->destinations(notifier()->vrfId(), prefix);
    if (reactor == nullptr || destinations == nullptr) {
        return;
    }
    const Orb::Ptr<const IntfIdSet> set(reactor->notifier());
    const Orb::Ptr<const IntfBacklog> source(notifier());
    for (const VrfId destVrfId : Orb::keysOf(*destinations)) {
        owner()->handleContributor(*source, *set, iiaa, destVrfId);
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::noteVirtual(const Lanx::IpGenPrefix& prefix,
                                                     Lanx::IntfId intfId, bool contributes) {
    if (contributes) {
        virtualPrefixes_.tryInsert(intfId).first->insertOrAssign(prefix, true);
        return;
    }
    Prefixes* prefixes = virtualPrefixes_.find(intfId);
    if (prefixes == nullptr) {
        return;
    }
    prefixes->erase(prefix);
    if (prefixes->empty()) {
        virtualPrefixes_.erase(intfId);
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::OrbOwnAddresses::onAttribute(Orb::AttributeId id,
                                                                      const void* key) {
    if (id == IntfViaSetKeyStatus::ownAddressesByIntfIdId) {
        owner()->handleOwnAddresses(Orb::keyAs<Lanx::IntfId>(key), notifier()->af());
    }
}

// Counts between one and many change nothing, but cost no more than finding that out.
void ReceiveRouteLeakSm::OrbIntfBacklog::handleOwnAddresses(Lanx::IntfId intfId,
                                                            Lanx::AddressFamily af) {
    const Prefixes* prefixes = virtualPrefixes_.find(intfId);
    if (prefixes == nullptr
        || notifier()->intfViaSetKeyStatusFromAf(af)->ownAddressesByIntfId(intfId) > 1) {
        return;
    }
    const Orb::Ptr<const IntfBacklog> source(notifier());
    for (const Lanx::IpGenPrefix& prefix : Orb::keysOf(*prefixes)) {
        if (const Orb::Ptr<const IntfIdSet> set{source->intfIdsByPrefix(prefix)}) {
            handleVirtual(*source, *set, intfId);
        }
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::handleVirtual(const IntfBacklog& source,
                                                       const IntfIdSet& set, Lanx::IntfId intfId) {
    const auto* destinations = owner()->destinations(source.vrfId(), set.genPrefix());
    if (destinations == nullptr) {
        return;
    }
    for (const VrfId destVrfId : Orb::keysOf(*destinations)) {
        Orb::forEachKey(set.intfIdAndAddr(), [&](const IntfIdAndAddr& entry) {
            if (entry.intfId() == intfId && entry.isVirtual() && isLocalConnected(entry)) {
                owner()->handleContributor(source, set, entry, destVrfId);
            }
        });
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::handleDelete() {
    deleteLeakedFrom();
    deleteLeakedInto();
}

void ReceiveRouteLeakSm::OrbIntfBacklog::deleteLeakedFrom() {
    const Orb::Ptr<const IntfBacklog> source(notifier());
    for (const Lanx::AddressFamily af : {Lanx::AddressFamily::ipv4, Lanx::AddressFamily::ipv6}) {
        const Orb::Ptr<const RouteLeakedFromVrf> leaks(
            owner()->crLeakLocalStatus(af).leakedRouteBySourceVrf(source->vrfId()));
        if (leaks == nullptr) {
            continue;
        }
        Orb::forEachKey(leaks->destVrfId(), [&](const Lanx::IpGenPrefix& prefix) {
            if (const Orb::Ptr<const IntfIdSet> set{source->intfIdsByPrefix(prefix)}) {
                for (const VrfId destVrfId : Orb::keysOf(*leaks->destVrfId().find(prefix))) {
                    deleteLeakedFrom(*source, *set, destVrfId);
                }
            }
        });
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::deleteLeakedFrom(const IntfBacklog& source,
                                                          const IntfIdSet& set, VrfId destVrfId) {
    Orb::forEachKey(set.intfIdAndAddr(), [&](const IntfIdAndAddr& entry) {
        if (const Orb::Ptr<IntfBacklog> dest{owner()->intfBacklogByVrf()->intfBacklog(destVrfId)}) {
            owner()->delLeakedReceiveRoute(entry.intfId(), entry.addrWithMask(), source, *dest);
        }
    });
}

void ReceiveRouteLeakSm::OrbIntfBacklog::deleteLeakedInto() {
    const Orb::Ptr<IntfBacklog> dest(const_cast<IntfBacklog*>(notifier()));
    std::vector<IntfIdAndAddr> leaked;
    for (const auto& set : dest->intfIdsByPrefix()) {
        for (const auto& [entry, viaSetKey] : set->intfIdAndAddr()) {
            if (entry.sourceVrfId() != VrfId::invalid()) {
                leaked.push_back(entry);
            }
        }
    }
    for (const IntfIdAndAddr& entry : leaked) {
        if (const IntfBacklog* source =
                owner()->intfBacklogByVrf()->intfBacklog(entry.sourceVrfId())) {
            owner()->delLeakedReceiveRoute(entry.intfId(), entry.addrWithMask(), *source, *dest);
        }
    }
}

// --- The contributors of one leaked prefix.

ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfIdsByPrefix::OrbIntfIdsByPrefix(
    OrbIntfBacklog* backlog, Orb::Ptr<const IntfIdSet> set)
    : MemberReactor(backlog) {
    attach(std::move(set));
}

// Contributors that are there already are leaked by whoever had the prefix followed.
void ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfIdsByPrefix::handleInitialized() {
    noteVirtuals(true);
}

void ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfIdsByPrefix::noteVirtuals(bool contribute) {
    for (const auto& [entry, viaSetKey] : notifier()->intfIdAndAddr()) {
        if (entry.isVirtual() && isLocalConnected(entry)) {
            owner()->noteVirtual(notifier()->genPrefix(), entry.intfId(), contribute);
        }
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfIdsByPrefix::notifierIs(
    Orb::Ptr<const IntfIdSet> set) {
    noteVirtuals(false);
    MemberReactor::notifierIs(std::move(set));
    noteVirtuals(true);
}

void ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfIdsByPrefix::orbDoZombieReactors(bool zombie) {
    const bool goes = zombie && !orbMarkedForDeletion();
    MemberReactor::orbDoZombieReactors(zombie);
    if (goes) {
        noteVirtuals(false);
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfIdsByPrefix::onAttribute(Orb::AttributeId id,
                                                                         const void* key) {
    if (id == IntfIdSet::intfIdAndAddrId) {
        const IntfIdAndAddr iiaa = Orb::keyAs<IntfIdAndAddr>(key);
        const bool added = notifier()->intfIdAndAddr().find(iiaa) != nullptr;
        owner()->handleIntfIdAndAddr(notifier()->genPrefix(), iiaa, added);
    }
}

} // namespace Routing::DirectNet
