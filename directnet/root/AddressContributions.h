#pragma once

#include <utility>

#include "directnet/backlog/IntfBacklog.h"
#include "directnet/backlog/IntfViaSetConfig.h"
#include "directnet/backlog/ViaSetReferences.h"
#include "directnet/model/Traits.h"
#include "platform/orb/Keys.h"

namespace Routing::DirectNet {

/// What the addresses of one interface contribute to its VRF in both families alike: the subnet of
/// an address that has one, and the address itself. For every address that was added the interface
/// holds via-set references until the address is withdrawn.
template <typename Traits>
class AddressContributions {
  public:
    using AddrWithMask = typename Traits::AddrWithMask;
    using VrfId = Vrf::VrfIdMap::VrfId;

    AddressContributions(Lanx::IntfId intfId, Orb::Ptr<IntfViaSetConfig> intfViaSetConfig,
                         Orb::Ptr<IntfBacklog> intfBacklog)
        : intfId_(intfId), intfViaSetConfig_(std::move(intfViaSetConfig)),
          intfBacklog_(std::move(intfBacklog)) {}

    /// The interface's via sets, made if there are none.
    IntfViaSetKey viaSetKey() {
        return intfViaSetConfig_->findOrCreateViaSetKey(intfId_, intfBacklog_->vrfId(), status());
    }

    void add(const AddrWithMask& address) {
        fetchAhead(address.subnet());
        fetchAhead(address.hostPrefix());
        const IntfViaSetKey key = viaSetKey();
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
        if (references_.take(address, intfId_, status())) {
            status().incOwnAddresses(intfId_);
        }
    }

    /// Gives back all references that were taken for the address; via sets go with the last one.
    void giveReferencesBack(const AddrWithMask& address) {
        if (references_.holds(address)) {
            status().decOwnAddresses(intfId_);
        }
        references_.giveBack(address, intfId_, *intfViaSetConfig_, status());
    }

    void giveAllReferencesBack() {
        for (const AddrWithMask& address : Orb::keysOf(references_.taken())) {
            giveReferencesBack(address);
        }
    }

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
    ViaSetReferences<AddrWithMask> references_;
};

} // namespace Routing::DirectNet
