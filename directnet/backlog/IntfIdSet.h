#pragma once

#include <utility>

#include "directnet/backlog/IntfIdAndAddr.h"
#include "platform/lanx/IpGenPrefix.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/container/Paged.h"
#include "platform/routing/ViaSetKey.h"

namespace Routing::DirectNet {

/// The contributors of one prefix, in the order of precedence: the first one is the prefix's route.
/// The value of a contributor is the via set that its route uses. The set is in
/// IntfBacklog::intfIdsByPrefix exactly as long as the prefix has a contributor; without one it may
/// stay in the index's table until the prefix's route has gone.
///
/// There may be millions, hence the order of the declarations: what follows the map lies in its
/// padding.
class IntfIdSet final : public Orb::Entity, public Orb::Paged<IntfIdSet> {
    ORB_ENTITY(IntfIdSet, "Routing::DirectNet::IntfIdSet")
    ORB_SOLE_MAP(259, IntfIdAndAddr, Rib::ViaSetKey, intfIdAndAddr)
    ORB_CONSTRUCTOR((Lanx::IpGenPrefix, genPrefix))
    ORB_KEY(Lanx::IpGenPrefix, genPrefix)

  public:
    explicit IntfIdSet(Arguments arguments) : arguments_(std::move(arguments)) {}

    std::size_t intfIdAndAddrs() const { return intfIdAndAddr().size(); }

    /// The interface for which the prefix's route was written; none without a route. Kept by the
    /// index that the set is in.
    Lanx::IntfId installedIntfId() const { return installedIntfId_; }

  private:
    friend class PrefixIndex;

    bool listed_ = false; // in IntfBacklog::intfIdsByPrefix
    Lanx::IntfId installedIntfId_;
};

static_assert(sizeof(IntfIdSet) <= 88);

inline Orb::Ptr<IntfIdSet> intfIdSetFactory(const Lanx::IpGenPrefix& prefix) {
    return Orb::makePtr<IntfIdSet>(IntfIdSet::Arguments{prefix});
}

} // namespace Routing::DirectNet
