#pragma once

#include "directnet/backlog/IntfViaSetKey.h"
#include "directnet/backlog/RoomWaiter.h"
#include "directnet/virtualip/VirtualIpIntfReactor.h"
#include "directnet/virtualip/VirtualIpTableReactor.h"
#include "directnet/virtualip/VirtualIpTraits.h"

namespace Routing::DirectNet {

/// The operations of the two VrfVirtualIpStatusSm, which are one for both families. `Sm` derives
/// from this and names its table of virtual addresses and what it does about subnets.
template <typename Sm, typename Family>
class VrfVirtualIpMachine {
  public:
    using Key = typename VirtualIpTraits<Family>::Key;
    using OrbVirtualIpIntfStatusSm =
        VirtualIpIntfReactor<Sm, typename VirtualIpTraits<Family>::IntfStatus>;

    void handleInitialized();
    /// The address came into the table or left it, or its object was replaced.
    void handleVrfVirtualIpStatus(const Key& key);
    /// Every address of the table.
    void handleVrfVirtualIpStatus();
    /// The interface came to the address or left it.
    void handleVirtualIpIntfStatus(const Key& key, Lanx::IntfId intfId);
    /// The address's nested machine goes: what it contributed is withdrawn.
    void handleVirtualIpIntfStatusDeletion(OrbVirtualIpIntfStatusSm& nested);

    /// There may be room for vias of interfaces, which there was not when they came.
    void handleRoom();
    /// The interface's via sets, made if there are none; empty while there is no room for its via.
    IntfViaSetKey viaSetKeyOrWait(Lanx::IntfId intfId);

  protected:
    /// Lets go of all nested machines and of the via sets that the machine has.
    void doReleaseAll();

  private:
    Sm& self() { return static_cast<Sm&>(*this); }

    RoomWaiter<Sm> room_;
};

} // namespace Routing::DirectNet
