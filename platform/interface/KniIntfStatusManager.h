#pragma once

#include "platform/interface/DeviceIntfStatusDir.h"
#include "platform/interface/KernelNetInfo.h"
#include "platform/lanx/NamespaceName.h"
#include "platform/orb/attribute/Declare.h"

namespace Interface {

/// Keeps a directory of the kernel devices of one network namespace in line with what the kernel
/// reports there. Several directories may follow one namespace, each with a manager of its own.
class KniIntfStatusManager : public Orb::Entity {
    ORB_ENTITY(KniIntfStatusManager, "Interface::KniIntfStatusManager")
    ORB_CONSTRUCTOR((Orb::Ptr<DeviceIntfStatusDir>, deviceIntfStatusDir),
                    (Orb::Ptr<const KernelNetInfo::Status>, kniStatus),
                    (Lanx::NamespaceName, netNs))

  public:
    explicit KniIntfStatusManager(Arguments arguments);

    bool omitNonRunningKernelDevices() const { return omitNonRunning_; }
    /// Whether devices that are not running are left out of the directory. Off at first.
    void omitNonRunningKernelDevicesIs(bool omit);

  private:
    class OrbKniStatus : public Orb::InputReactor<KniIntfStatusManager, KernelNetInfo::Status> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    void handleDevice(Lanx::IntfId intfId);
    void handleDevices();

    bool omitNonRunning_ = false;
    OrbKniStatus orbKniStatus_;
};

} // namespace Interface
