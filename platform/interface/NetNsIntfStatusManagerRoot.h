#pragma once

#include <vector>

#include "platform/interface/AllIntfStatusDir.h"
#include "platform/interface/AllIntfStatusLocalDir.h"
#include "platform/interface/KniIntfStatusManager.h"
#include "platform/orb/attribute/Declare.h"

namespace Interface {

/// The kernel-interface status managers of all network namespaces.
class NetNsIntfStatusManagerRoot : public Orb::Entity {
    ORB_ENTITY(NetNsIntfStatusManagerRoot, "Interface::NetNsIntfStatusManagerRoot")
    ORB_CONSTRUCTOR((Orb::Ptr<const AllIntfStatusDir>, allIntfStatusDir),
                    (Orb::Ptr<const AllIntfStatusLocalDir>, allIntfStatusLocalDir),
                    (bool, manageLocalInterfaces))

  public:
    explicit NetNsIntfStatusManagerRoot(Arguments arguments) : arguments_(std::move(arguments)) {}

    /// The manager that fills `dir` from the namespace's kernel status, made if there is none.
    Orb::Ptr<KniIntfStatusManager>
    intfStatusManagerIs(const Orb::Ptr<DeviceIntfStatusDir>& dir,
                        const Orb::Ptr<const KernelNetInfo::Status>& kniStatus,
                        const Lanx::NamespaceName& netNs);

    /// Deletes the namespace's manager of that directory. VRFs may share a namespace, and one that
    /// goes must leave the directories of the others alone.
    void intfStatusManagerDel(const Lanx::NamespaceName& netNs,
                              const Orb::Ptr<DeviceIntfStatusDir>& dir);

    std::size_t intfStatusManagers() const { return managers_.size(); }

  private:
    std::vector<Orb::Ptr<KniIntfStatusManager>> managers_;
};

} // namespace Interface
