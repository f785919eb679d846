#pragma once

#include <utility>

#include "directnet/backlog/IntfViaSetKeyStatus.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/routing/ViaConfig.h"
#include "platform/routing/ViaSetConfig.h"
#include "platform/vrf/VrfId.h"

namespace Routing::DirectNet {

/// Makes and deletes an interface's via and via sets: one via, the interface itself as next hop,
/// and on it a set of each kind (RouteKinds.h) that the family has. Which interface has which is
/// kept in a status that the caller passes.
class IntfViaSetConfig : public Orb::Entity {
    ORB_ENTITY(IntfViaSetConfig, "Routing::DirectNet::IntfViaSetConfig")
    ORB_CONSTRUCTOR((Orb::Ptr<Rib::Ip::ViaConfig>, ipv4ViaConfig),
                    (Orb::Ptr<Rib::Ip::ViaConfig>, ipv6ViaConfig),
                    (Orb::Ptr<Rib::ViaSetConfig>, viaSetConfig))

  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    explicit IntfViaSetConfig(Arguments arguments) : arguments_(std::move(arguments)) {}

    const Orb::Ptr<Rib::Ip::ViaConfig>& getViaConfig(Lanx::AddressFamily af) const;

    /// The interface's via sets, made if there are none; empty while there is no room for its via.
    IntfViaSetKey findOrCreateViaSetKey(Lanx::IntfId intfId, VrfId vrfId,
                                        IntfViaSetKeyStatus& status);
    void doAddViaSet(Lanx::IntfId intfId, VrfId vrfId, IntfViaSetKeyStatus& status);

    /// Deletes the interface's via sets and via, whatever references there are; none is fine.
    void delViaSetKey(Lanx::IntfId intfId, IntfViaSetKeyStatus& status);
    /// Deletes those of every interface of the status.
    void delViaSetKeyAll(IntfViaSetKeyStatus& status);

    /// Gives one reference back; with the last one the via sets go.
    void releaseViaSetKey(Lanx::IntfId intfId, IntfViaSetKeyStatus& status);

  private:
    void deleteViaSets(const IntfViaSetKey& key, Lanx::AddressFamily af);
    IntfViaSetKey addViaSets(Lanx::IntfId intfId, const Rib::ViaKey& viaKey,
                             Lanx::AddressFamily af);
    Rib::ViaSetKey addViaSet(const Rib::ViaKey& viaKey, Lanx::AddressFamily af,
                             const ViaSetKind& kind);
};

} // namespace Routing::DirectNet
