#pragma once

#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Value.h"
#include "platform/routing/ViaKey.h"
#include "platform/routing/ViaSetKey.h"

namespace Routing::DirectNet {

/// The via of an interface in one address family and the via sets made of it. IPv6 has no broadcast
/// via sets; their keys stay empty.
class IntfViaSetKey {
    ORB_VALUE(IntfViaSetKey, "Routing::DirectNet::IntfViaSetKey", (Lanx::IntfId, intfId),
              (Routing::Rib::ViaKey, viaKey),
              (Routing::Rib::ViaSetKey, viaSetKey),              // of subnet routes
              (Routing::Rib::ViaSetKey, rxViaSetKey),            // of receive routes
              (Routing::Rib::ViaSetKey, rxBcastViaSetKey),       // of network addresses
              (Routing::Rib::ViaSetKey, directedBcastViaSetKey)) // of broadcast addresses
};

} // namespace Routing::DirectNet
