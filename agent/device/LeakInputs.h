#pragma once

#include <map>
#include <set>

#include "agent/patch/DevicePatch.h"
#include "platform/lanx/IpGenPrefix.h"
#include "platform/routing/DirectNetLeakStatus.h"

namespace Agent {

/// The leaks of one family that the agent is told of. The document names their VRFs, the leak
/// status knows them by id: a leak is published while both its VRFs have an id.
///
/// Each VRF keeps the leaks that it takes part in, so that an id that comes or goes costs what the
/// VRF's own leaks cost.
template <typename Prefix>
class LeakInputs {
  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    explicit LeakInputs(Orb::Ptr<Routing::DirectNetLeakStatus> status);

    void apply(const Edit<LeakPatch<Prefix>>& patch);

    /// A VRF that had no id has got one.
    void vrfIdIs(const L3::VrfName& name, VrfId id);
    /// A VRF has lost its id.
    void vrfIdDel(const L3::VrfName& name);

  private:
    struct Participant;
    using Vrfs = std::map<L3::VrfName, Participant>;
    using Vrf = typename Vrfs::value_type;
    /// One end of a leak, seen from the other. Ordered by prefix and the VRF's name, those of one
    /// prefix behind the one without a VRF.
    struct Leak {
        Prefix prefix;
        Vrf* vrf;
        bool operator<(const Leak& other) const;
    };
    using Leaks = std::set<Leak>;
    struct Participant {
        VrfId id;
        Leaks to;   // of prefixes of this VRF, with their destinations
        Leaks from; // into this VRF, with their sources
    };

    Vrf& vrf(const L3::VrfName& name) { return *vrfs_.try_emplace(name).first; }
    void dropIfUnused(Vrf& vrf);
    void applyTo(Vrf& source, const MapPatch<Prefix, VrfSetPatch>& patch);
    void add(Vrf& source, const Prefix& prefix, Vrf& destination);
    void remove(Vrf& source, const Prefix& prefix, const L3::VrfName& destination);
    void removeRange(Vrf& source, typename Leaks::iterator from, typename Leaks::iterator to);
    void publish(const Vrf& source, const Prefix& prefix, const Vrf& destination);
    void withdraw(const Vrf& source, const Prefix& prefix, const Vrf& destination);

    Orb::Ptr<Routing::DirectNetLeakStatus> status_;
    Vrfs vrfs_; // those with an id or a leak
};

extern template class LeakInputs<Lanx::IpPrefix>;
extern template class LeakInputs<Lanx::Ip6Prefix>;

} // namespace Agent
