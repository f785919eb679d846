#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/lanx/IntfId.h"
#include "platform/lanx/NamespaceName.h"
#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// A VRF that somebody asked for or that was seen on the device.
struct KnownVrf {
    L3::VrfName name;
    std::optional<Lanx::NamespaceName> netns; ///< none if the VRF is nowhere
    Lanx::IntfId device;                      ///< the VRF device; the empty one if it is none
    std::optional<Vrf::VrfIdMap::VrfId> id;   ///< what it has or would have
    std::string obstacle;                     ///< why it is not up; empty if it is
};

/// All VRFs that are known on a device, whether they are up or not.
class VrfCatalog {
  public:
    virtual ~VrfCatalog() = default;

    /// By name; of one name the one that is up is the first.
    virtual std::vector<KnownVrf> knownVrfs() const = 0;
};

} // namespace Agent
