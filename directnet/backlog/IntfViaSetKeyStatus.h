#pragma once

#include <cstdint>
#include <utility>

#include "directnet/backlog/RouteKinds.h"
#include "platform/lanx/AddressFamily.h"
#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// The via sets of the interfaces of one VRF in one address family, and how many references keep
/// each interface's alive: one for each address that contributes and each local route that is
/// installed through it. An interface without references has no count, never a count of 0.
class IntfViaSetKeyStatus : public Orb::Entity {
    ORB_ENTITY(IntfViaSetKeyStatus, "Routing::DirectNet::IntfViaSetKeyStatus")
    ORB_CONSTRUCTOR((Lanx::AddressFamily, af))
    ORB_MAP(259, Lanx::IntfId, IntfViaSetKey, intfViaSetKey)
    ORB_MAP(260, Lanx::IntfId, std::uint32_t, vskRefcountByIntfId)
    /// How many of the interface's own addresses contribute; an interface without has no entry.
    ORB_MAP(261, Lanx::IntfId, std::uint32_t, ownAddressesByIntfId)

  public:
    explicit IntfViaSetKeyStatus(Arguments arguments) : arguments_(std::move(arguments)) {}

    void intfViaSetKeyIs(const IntfViaSetKey& key) { intfViaSetKeyIs(key.intfId(), key); }

    void incIntfVskRefcount(Lanx::IntfId intfId);
    /// The count must be positive; the entry goes with the last reference. Answers whether that was
    /// the last one.
    bool decIntfVskRefcount(Lanx::IntfId intfId);

    void incOwnAddresses(Lanx::IntfId intfId);
    void decOwnAddresses(Lanx::IntfId intfId);
};

} // namespace Routing::DirectNet
