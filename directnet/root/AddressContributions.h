#pragma once

#include <cstdint>
#include <utility>

#include "directnet/backlog/IntfBacklog.h"
#include "directnet/backlog/IntfViaSetConfig.h"
#include "directnet/model/Traits.h"
#include "platform/orb/container/HashMap.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

/// What the addresses of one interface contribute to its VRF in both families alike: the subnet of
/// an address that has one, and the address itself. For every address that was added the interface
/// holds via-set references until the address is withdrawn, and one for an address of which only
/// the broadcasts were.
template <typename Traits>
class AddressContributions {
  public:
    using AddrWithMask = typename Traits::AddrWithMask;
    using VrfId = Vrf::VrfIdMap::VrfId;

    /// What is held for one address.
    struct Held {
        std::uint32_t additions = 0;
        /// One reference for the broadcasts alone, and whether it goes with the interface.
        bool broadcasts = false;
        bool stays = false;

        friend bool operator==(const Held&, const Held&) = default;
    };

    AddressContributions(Lanx::IntfId intfId, Orb::Ptr<IntfViaSetConfig> intfViaSetConfig,
                         Orb::Ptr<IntfBacklog> intfBacklog)
        : intfId_(intfId), intfViaSetConfig_(std::move(intfViaSetConfig)),
          intfBacklog_(std::move(intfBacklog)) {}

    /// The interface's via sets, made if there are none; empty while there is no room for its via.
    IntfViaSetKey viaSetKey() {
        return intfViaSetConfig_->findOrCreateViaSetKey(intfId_, intfBacklog_->vrfId(), status());
    }

    /// The table in which there is no room.
    const Orb::Ptr<Rib::Ip::ViaConfig>& vias() const {
        return intfViaSetConfig_->getViaConfig(Traits::af);
    }

    /// Nothing without via sets.
    void add(const AddrWithMask& address, const IntfViaSetKey& key) {
        if (address.len() < Traits::hostLen) {
            addPrefix(address.subnet(), address, Fib::RouteType::connected, key.viaSetKey());
        }
        addPrefix(address.hostPrefix(), address, hostRouteType(address), key.rxViaSetKey());
    }

    void withdraw(const AddrWithMask& address) {
        if (address.len() < Traits::hostLen) {
            delPrefix(address.subnet(), address, Fib::RouteType::connected);
        }
        delPrefix(address.hostPrefix(), address, hostRouteType(address));
    }

    void fetchAhead(const AddrWithMask& address) const {
        fetchAhead(address.subnet());
        fetchAhead(address.hostPrefix());
    }

    void fetchAhead(const Lanx::IpGenPrefix& prefix) const {
        intfBacklog_->fetchAhead(intfId_, prefix);
    }

    void addPrefix(const Lanx::IpGenPrefix& prefix, const AddrWithMask& address,
                   Fib::RouteType routeType, Rib::ViaSetKey viaSetKey) {
        intfBacklog_->addToIntfIdsByPrefix(intfId_, prefix, address, routeType, viaSetKey,
                                           VrfId::invalid(), false);
    }

    void delPrefix(const Lanx::IpGenPrefix& prefix, const AddrWithMask& address,
                   Fib::RouteType routeType) {
        intfBacklog_->delFromIntfIdsByPrefix(intfId_, prefix, address, routeType, VrfId::invalid(),
                                             false);
    }

    void takeReference(const AddrWithMask& address) {
        if (held_.tryInsert(address).first->additions++ == 0) {
            status().incOwnAddresses(intfId_);
        }
        status().incIntfVskRefcount(intfId_);
    }

    /// For an address that was not added, of which the broadcasts contribute. With `stays` it is
    /// held beyond the interface's going.
    void takeBroadcastReference(const AddrWithMask& address, bool stays) {
        Held& held = *held_.tryInsert(address).first;
        if (held.additions == 0 && !held.broadcasts) {
            held.broadcasts = true;
            held.stays = stays;
            status().incIntfVskRefcount(intfId_);
        }
    }

    /// Gives back all references that were taken for the address; via sets go with the last one.
    void giveReferencesBack(const AddrWithMask& address) {
        const auto taken = held_.take(address);
        if (!taken) {
            return;
        }
        const Held held = taken->value();
        if (held.additions > 0) {
            status().decOwnAddresses(intfId_);
        }
        for (std::uint32_t left = held.additions + (held.broadcasts ? 1 : 0); left > 0; --left) {
            intfViaSetConfig_->releaseViaSetKey(intfId_, status());
        }
    }

    const Orb::HashMap<AddrWithMask, Held>& held() const { return held_; }

  private:
    static Fib::RouteType hostRouteType(const AddrWithMask& address) {
        return address.len() < Traits::hostLen ? Fib::RouteType::receive
                                               : Fib::RouteType::attachedHost;
    }

    IntfViaSetKeyStatus& status() const {
        return *intfBacklog_->intfViaSetKeyStatusFromAf(Traits::af);
    }

    const Lanx::IntfId intfId_;
    const Orb::Ptr<IntfViaSetConfig> intfViaSetConfig_;
    const Orb::Ptr<IntfBacklog> intfBacklog_;
    Orb::HashMap<AddrWithMask, Held> held_;
};

} // namespace Routing::DirectNet
