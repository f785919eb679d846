#pragma once

#include <utility>
#include <vector>

#include "platform/orb/container/Keys.h"
#include "platform/orb/object/Reactor.h"

namespace Routing::DirectNet {

/// Watches a VRF's table of virtual addresses for the VRF's machine and keeps the machine's nested
/// machines in step with it.
template <typename Sm, typename Table>
class VirtualIpTableReactor : public Orb::Reactor<Sm, Table> {
  public:
    using Orb::Reactor<Sm, Table>::Reactor;

    void onAttribute(Orb::AttributeId id, const void* key) override {
        if (id == Table::virtualIpId) {
            handleVirtualIp(Orb::keyAs<typename Sm::Key>(key));
        } else if (id == Table::subnetRouteEnabledId) {
            this->owner()->handleSubnetRouteEnabled();
        }
    }

    void notifierIs(Orb::Ptr<const Table> table) override {
        Orb::Reactor<Sm, Table>::notifierIs(std::move(table));
        Sm& sm = *this->owner();
        const auto& virtualIps = this->notifier()->virtualIp();
        for (const auto& virtualIp : Orb::objectsOf(virtualIps)) {
            sm.virtualIpIntfStatusSmIs(virtualIp);
        }
        std::vector<typename Sm::Key> gone;
        for (const auto& nested : sm.virtualIpIntfStatusSm()) {
            if (!virtualIps.contains(nested->fwkKey())) {
                gone.push_back(nested->fwkKey());
            }
        }
        for (const auto& key : gone) {
            sm.virtualIpIntfStatusSmDel(key);
        }
        sm.handleSubnetRouteEnabled();
    }

  private:
    void handleVirtualIp(const typename Sm::Key& key) {
        Sm& sm = *this->owner();
        if (auto* virtualIp = this->notifier()->virtualIp(key)) {
            sm.virtualIpIntfStatusSmIs(Orb::Ptr(virtualIp));
        } else {
            sm.virtualIpIntfStatusSmDel(key);
        }
        sm.handleVrfVirtualIpStatus(key);
    }
};

} // namespace Routing::DirectNet
