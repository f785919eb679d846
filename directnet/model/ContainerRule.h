#pragma once

#include <string>
#include <string_view>

#include "platform/ip/AllVrfStatusLocal.h"
#include "platform/ip/VrfStatusLocal.h"
#include "platform/vrf/NameToIdMapWrapper.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet {

/// Whether a VRF is to have a container: its name must have an id and, unless it is the default
/// VRF, its local status be there and active.
class ContainerRule {
  public:
    ContainerRule(const L3::VrfName& name, const Vrf::VrfIdMap::NameToIdMapWrapper* ids,
                  const Ip::AllVrfStatusLocal& vrfs);

    bool due() const { return missing_ == Missing::nothing; }

    /// For a VRF that is not due: what it lacks, for traces.
    std::string missing() const;
    /// The same in a few words; empty for one that is due.
    std::string_view lack() const;

  private:
    enum class Missing { nothing, id, status, activity };

    L3::VrfName name_;
    Missing missing_ = Missing::nothing;
    Ip::VrfState state_{};
};

} // namespace Routing::DirectNet
