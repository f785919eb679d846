#pragma once

#include <string>
#include <vector>

#include "agent/linux/NamedLink.h"
#include "platform/lanx/IntfId.h"
#include "platform/lanx/NamespaceName.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// A link of a kernel, and the VRF that its addresses belong to, whether that is up or not.
struct KernelLink {
    Lanx::NamespaceName netns;
    L3::VrfName vrf;
    std::string obstacle; ///< why the VRF is not up; empty if it is
    Linux::NamedLink link;
};

/// Tells of the links that the kernels of the followed namespaces have.
class KernelLinks {
  public:
    virtual ~KernelLinks() = default;

    /// The links of that name, at most one a namespace.
    virtual std::vector<KernelLink> links(Lanx::IntfId name) const = 0;
    /// The names of all links, in no order; one may stand there more than once.
    virtual std::vector<Lanx::IntfId> names() const = 0;
};

} // namespace Agent
