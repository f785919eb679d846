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
template <typename Family>
class AddressContributions {
  public:
    using AddrWithMask = typename Family::AddrWithMask;
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
        return intfViaSetConfig_->getViaConfig(Family::af);
    }

    /// Adds the address's subnet, where it has one, and the address itself. The via sets must be
    /// there.
    void add(const AddrWithMask& address, const IntfViaSetKey& viaSets) {
        if (hasSubnet(address)) {
            add(address, viaSets,
                {{address.subnet(), RouteKinds::subnet},
                 {address.hostPrefix(), RouteKinds::address}});
        } else {
            add(address, viaSets, {{address.hostPrefix(), RouteKinds::loneAddress}});
        }
    }

    void withdraw(const AddrWithMask& address) {
        if (hasSubnet(address)) {
            withdraw(address, {{address.subnet(), RouteKinds::subnet},
                               {address.hostPrefix(), RouteKinds::address}});
        } else {
            withdraw(address, {{address.hostPrefix(), RouteKinds::loneAddress}});
        }
    }

    /// Other routes of the address.
    void add(const AddrWithMask& address, const IntfViaSetKey& viaSets,
             IntfBacklog::Contributions contributions) {
        intfBacklog_->addToIntfIdsByPrefix(viaSets, address, contributions, false);
    }

    void withdraw(const AddrWithMask& address, IntfBacklog::Contributions contributions) {
        intfBacklog_->delFromIntfIdsByPrefix(intfId_, address, contributions, false);
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
    /// Whether the address may contribute: what does is held.
    bool holds(const AddrWithMask& address) const { return held_.contains(address); }

  private:
    static bool hasSubnet(const AddrWithMask& address) { return address.len() < Family::hostLen; }

    IntfViaSetKeyStatus& status() const {
        return *intfBacklog_->intfViaSetKeyStatusFromAf(Family::af);
    }

    const Lanx::IntfId intfId_;
    const Orb::Ptr<IntfViaSetConfig> intfViaSetConfig_;
    const Orb::Ptr<IntfBacklog> intfBacklog_;
    Orb::HashMap<AddrWithMask, Held> held_;
};

} // namespace Routing::DirectNet
