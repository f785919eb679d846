#pragma once

#include <optional>
#include <utility>

#include "agent/device/Ipv4Inputs.h"
#include "agent/device/Ipv6Inputs.h"
#include "agent/device/KernelInputs.h"
#include "agent/device/LeakInputs.h"
#include "agent/device/VirtualIpInputs.h"
#include "agent/device/VrfInputs.h"
#include "agent/patch/DevicePatch.h"
#include "directnet/ready/GrState.h"
#include "platform/arp/VirtualIpAsReceiveRoute.h"
#include "platform/interface/AllIntfStatusDir.h"
#include "platform/interface/AllIntfStatusLocalDir.h"
#include "platform/kiln/TaskScheduler.h"
#include "platform/orb/attribute/Dir.h"
#include "platform/routing/AllVrfRibReady.h"
#include "platform/routing/ViaSetConfig.h"
#include "platform/vaultdb/EntityManager.h"

namespace Agent {

/// The inputs of the library's root, kept in line with the device document by merge patches. It
/// makes no difference where those come from: a scenario or the live device.
///
/// A patch may be applied from inside a notification of what the library writes, also while another
/// one is being applied.
///
/// Applying a patch costs what the patch names, whatever the document holds. Whoever watches the
/// inputs is told while the patch is applied, in an order in which the VRFs that go are gone first
/// and those that come find their interfaces and addresses in place.
///
/// One agent thread, no locks.
class DeviceInputs {
  public:
    /// Where the tables are.
    struct Tables {
        Orb::Ptr<Vaultdb::Folder> folder{}; ///< null for private ones
        /// The tables of leaks are somebody else's, and what patches say of leaks is not applied.
        bool externalLeaks = false;
    };

    /// `gracefulRestart` is how the agent was started, which no patch can change. Leaks that an
    /// earlier run left in the tables are removed. Throws Vaultdb::TableInUseError when somebody
    /// writes one of the tables that are mounted here, Vaultdb::FolderError.
    DeviceInputs(Orb::Ptr<Kiln::TaskScheduler> scheduler, bool gracefulRestart, Tables tables);
    /// With private tables.
    DeviceInputs(Orb::Ptr<Kiln::TaskScheduler> scheduler, bool gracefulRestart)
        : DeviceInputs(std::move(scheduler), gracefulRestart, Tables{}) {}
    DeviceInputs(const DeviceInputs&) = delete;
    DeviceInputs& operator=(const DeviceInputs&) = delete;
    ~DeviceInputs() = default;

    /// Throws DocumentError, with nothing applied, for a patch after which two VRFs would have one
    /// id or which changes gracefulRestart.
    void apply(const DevicePatch& patch);

    const Orb::Ptr<Vaultdb::EntityManager>& entityManager() const { return entityManager_; }
    const Orb::Ptr<Kiln::TaskScheduler>& scheduler() const { return scheduler_; }
    const Orb::Ptr<Routing::Rib::ViaSetConfig>& viaSetConfig() const { return viaSetConfig_; }
    const Orb::Ptr<Ip::Status>& ipStatus() const { return ipv4_.status(); }
    const Orb::Ptr<Ip6::Status>& ip6Status() const { return ipv6_.status(); }
    const Orb::Ptr<VirtualIp::VirtualIpStatus>& virtualIpStatus() const {
        return virtualIps4_.status();
    }
    const Orb::Ptr<VirtualIp::VirtualIp6Status>& virtualIp6Status() const {
        return virtualIps6_.status();
    }
    const Orb::Ptr<Arp::VirtualIpAsReceiveRoute>& virtualIpAsReceiveRoute() const {
        return virtualIpAsReceiveRoute_;
    }
    const VrfInputs& vrfs() const { return vrfs_; }
    const Orb::Ptr<Interface::AllIntfStatusDir>& allIntfStatusDir() const {
        return allIntfStatusDir_;
    }
    const Orb::Ptr<Interface::AllIntfStatusLocalDir>& allIntfStatusLocalDir() const {
        return allIntfStatusLocalDir_;
    }
    const Orb::Ptr<Routing::Rib::AllVrfRibReady>& allVrfRibReady() const { return ribWaits_; }
    const Orb::Ptr<Orb::Dir>& protoStatusDir() const { return protoStatusDir_; }
    const Orb::Ptr<Routing::DirectNet::GrState>& grState() const { return grState_; }

  private:
    /// The leaks of both families.
    struct Leaks {
        explicit Leaks(const Orb::Ptr<Vaultdb::EntityManager>& entityManager);

        LeakInputs<Lanx::IpPrefix> ipv4;
        LeakInputs<Lanx::Ip6Prefix> ipv6;
    };

    void checkGracefulRestart(const DevicePatch& patch) const;
    void apply(const Edit<VirtualIpsPatch>& patch);
    template <typename Change>
    void changeLeaks(const Change& change);
    void applyRibWaits(const Edit<VrfSetPatch>& patch);

    Orb::Ptr<Vaultdb::EntityManager> entityManager_;
    Orb::Ptr<Kiln::TaskScheduler> scheduler_;
    Orb::Ptr<Routing::Rib::ViaSetConfig> viaSetConfig_;
    Orb::Ptr<Arp::VirtualIpAsReceiveRoute> virtualIpAsReceiveRoute_;
    Orb::Ptr<Interface::AllIntfStatusDir> allIntfStatusDir_;
    Orb::Ptr<Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir_;
    Orb::Ptr<Routing::Rib::AllVrfRibReady> ribWaits_;
    Orb::Ptr<Orb::Dir> protoStatusDir_;
    Orb::Ptr<Routing::DirectNet::GrState> grState_;
    VrfInputs vrfs_;
    KernelInputs kernel_;
    Ipv4Inputs ipv4_;
    Ipv6Inputs ipv6_;
    VirtualIpInputs<VirtualIp4Traits> virtualIps4_;
    VirtualIpInputs<VirtualIp6Traits> virtualIps6_;
    std::optional<Leaks> leaks_; // none while they are somebody else's
};

} // namespace Agent
