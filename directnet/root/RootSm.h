#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "directnet/backlog/IntfBacklogByVrf.h"
#include "directnet/backlog/IntfViaSetConfig.h"
#include "directnet/leak/CrLeakSm.h"
#include "directnet/leak/ReceiveRouteLeakSm.h"
#include "directnet/model/Units.h"
#include "directnet/ready/AllVrfRibReadySm.h"
#include "directnet/ready/ProtoVrfSm.h"
#include "directnet/root/ContainerSm.h"
#include "directnet/root/RootInputs.h"
#include "directnet/root/VrfNameSet.h"
#include "directnet/virtualip/AllVrfVirtualIpStatus.h"
#include "directnet/virtualip/VirtualIpStatusSm.h"
#include "directnet/virtualip/VrfVirtualIpStatusHelper.h"
#include "platform/arp/VirtualIpAsReceiveRoute.h"
#include "platform/kiln/TaskScheduler.h"
#include "platform/routing/DirectNetLeakLocalStatus.h"
#include "platform/routing/DirectNetLeakStatus.h"

namespace Routing::DirectNet {

class ContainerRule;

/// The library's one object that a hosting agent creates, with its inputs. Mounts the output
/// tables, creates what the VRFs share, and keeps one ContainerSm for each VRF that has an id and,
/// unless it is the default VRF, an active local status.
///
/// The host stops it with handleDelete() and then lets go of it. Both, and every change of an
/// input, happen on the agent thread, under an Orb::ActivityManager.
class RootSm : public Orb::Entity {
    ORB_ENTITY(RootSm, "Routing::DirectNet::RootSm")
    ORB_CONSTRUCTOR((Orb::Ptr<Vaultdb::EntityManager>, entityManager),
                    (Orb::Ptr<Kiln::TaskScheduler>, scheduler, Orb::mayBeNull),
                    (Orb::Ptr<Rib::ViaSetConfig>, viaSetConfig),
                    (Orb::Ptr<const Ip::Status>, ipStatus, Orb::mayBeNull),
                    (Orb::Ptr<const Ip6::Status>, ip6Status, Orb::mayBeNull),
                    (Orb::Ptr<const VirtualIp::VirtualIpStatus>, virtualIpStatus, Orb::mayBeNull),
                    (Orb::Ptr<const VirtualIp::VirtualIp6Status>, virtualIp6Status, Orb::mayBeNull),
                    (Orb::Ptr<Arp::VirtualIpAsReceiveRoute>, virtualIpAsReceiveRoute),
                    (Orb::Ptr<const Vrf::VrfIdMap::NameToIdMapWrapper>, nameToIdMapWrapper,
                     Orb::mayBeNull),
                    (Orb::Ptr<const Ip::AllVrfStatusLocal>, allVrfStatusLocal),
                    (Orb::Ptr<const Interface::AllIntfStatusDir>, allIntfStatusDir),
                    (Orb::Ptr<const Interface::AllIntfStatusLocalDir>, allIntfStatusLocalDir),
                    (Orb::Ptr<const Rib::AllVrfRibReady>, allVrfRibReady),
                    (Orb::Ptr<Orb::Dir>, protoStatusDir), (Orb::Ptr<const GrState>, grState))

  public:
    /// Watches the local status of one VRF.
    class VrfStatusLocalSm : public Orb::InputMemberReactor<RootSm, Ip::VrfStatusLocal> {
        ORB_TYPE(VrfStatusLocalSm, "Routing::DirectNet::RootSm::VrfStatusLocalSm")

      public:
        VrfStatusLocalSm(RootSm* root, Orb::Ptr<const Ip::VrfStatusLocal> status);

        const L3::VrfName& vrfName() const { return fwkKey(); }

        void handleInitialized() { handleVrfStatusLocal(); }
        void handleVrfStatusLocal();
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void onRemembered(Orb::AttributeId id, const void* key) override;
        /// Catches up with an object that was replaced.
        void notifierIs(Orb::Ptr<const Ip::VrfStatusLocal> status) override;
        void orbDoZombieReactors(bool zombie) override;
    };

    ORB_ATTRIBUTE(273, std::uint32_t, maxViaSets)
    ORB_ATTRIBUTE(274, std::uint32_t, maxVrfs)
    ORB_ATTRIBUTE(275, Orb::Ptr<Rib::Ip::ViaConfig>, ipv4AllVrfViaConfig)
    ORB_ATTRIBUTE(276, Orb::Ptr<Rib::Ip::ViaConfig>, ipv6AllVrfViaConfig)
    ORB_ATTRIBUTE(277, Orb::Ptr<Rib::RouteConfig>, ipv4AllVrfRouteConfig)
    ORB_ATTRIBUTE(278, Orb::Ptr<Rib::RouteConfig>, ipv6AllVrfRouteConfig)
    ORB_CHILD(279, AllVrfReadyStatus, allVrfReadyStatus)
    ORB_CHILD(280, AllVrfRibReadySm, allVrfRibReadySm)
    ORB_CHILD(281, Ipv4::AllVrfVirtualIpStatus, allVrfVirtualIpStatus)
    ORB_CHILD(282, Ipv6::AllVrfVirtualIpStatus, allVrfVirtualIp6Status)
    ORB_CHILD(283, Ipv4::VrfVirtualIpStatusHelper, vrfVirtualIpStatusHelper)
    ORB_CHILD(284, Ipv6::VrfVirtualIpStatusHelper, vrfVirtualIp6StatusHelper)
    ORB_CHILD(285, Ipv4::VirtualIpStatusSm, virtualIpStatusSm)
    ORB_CHILD(286, Ipv6::VirtualIpStatusSm, virtualIp6StatusSm)
    ORB_CHILD(287, IntfBacklogByVrf, intfBacklogByVrf)
    ORB_ATTRIBUTE(288, Orb::Ptr<DirectNetLeakStatus>, ipv4CrLeakStatus)
    ORB_CHILD(289, DirectNetLeakLocalStatus, ipv4CrLeakLocalStatus)
    ORB_CHILD(290, CrLeakSm, ipv4CrLeakSm)
    ORB_ATTRIBUTE(291, Orb::Ptr<DirectNetLeakStatus>, ipv6CrLeakStatus)
    ORB_CHILD(292, DirectNetLeakLocalStatus, ipv6CrLeakLocalStatus)
    ORB_CHILD(293, CrLeakSm, ipv6CrLeakSm)
    ORB_CHILD(294, ReceiveRouteLeakSm, receiveRouteLeakSm)
    ORB_CHILD(295, IntfViaSetConfig, intfViaSetConfig)
    ORB_CHILD(296, Interface::NetNsIntfStatusManagerRoot, intfStatusManagerRoot)
    ORB_CHILDREN(297, ContainerSm, containerSm)
    ORB_REACTORS(298, VrfStatusLocalSm, vrfStatusLocal)
    ORB_ATTRIBUTE(299, bool, initialized)
    ORB_ATTRIBUTE(300, Orb::Ptr<Rib::ProtoVrfTable>, protoVrfTable)
    ORB_CHILD(301, ProtoVrfSm, protoVrfSm)

  public:
    static Orb::Ptr<RootSm> RootSmIs(const RootInputs& inputs);
    /// The same from the fifteen inputs one by one, in the order of the constructor attributes.
    template <typename... Inputs>
        requires(sizeof...(Inputs) == 15)
    static Orb::Ptr<RootSm> RootSmIs(Inputs&&... inputs) {
        return Orb::makePtr<RootSm>(Arguments{std::forward<Inputs>(inputs)...});
    }

    explicit RootSm(Arguments arguments);
    ~RootSm() override;

    void handleInitialized();

    /// Looks at every VRF of the name-to-id map.
    void handleRibVrfNameToIdMap();

    /// Brings the existence of the VRF's container in line with the conditions for it.
    void doCreateOrDeleteContainer(const L3::VrfName& name);
    void doDeleteContainer(const L3::VrfName& name);
    void doDeleteContainer();

    /// Stops the agent: deletes every container and releases the output tables. Nobody but the
    /// host may hold the root. Called from inside a notification it happens when the decision that
    /// is under way has finished; the root lives until then.
    void handleDelete();

    /// The local status of a VRF is gone: so is its container, whatever the other conditions say.
    void orb_handleVrfStatusLocal(const VrfStatusLocalSm& sm);

    void orbDoZombieReactors(bool zombie) override;

  protected:
    void handleZeroRef() override;

  private:
    using VrfId = Vrf::VrfIdMap::VrfId;
    using NameToIdMap = Vrf::VrfIdMap::NameToIdMap;
    using NameToIdMapWrapper = Vrf::VrfIdMap::NameToIdMapWrapper;

    class OrbNameToIdMapWrapper : public Orb::InputReactor<RootSm, NameToIdMapWrapper> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    class OrbOrb_NameToIdMapIn : public Orb::InputReactor<RootSm, NameToIdMap> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void onRemembered(Orb::AttributeId id, const void* key) override;
    };

    class OrbAllVrfStatusLocal : public Orb::InputReactor<RootSm, Ip::AllVrfStatusLocal> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void onRemembered(Orb::AttributeId id, const void* key) override;
    };

    void doStart();
    void doUndoStart();
    void doStop();
    void doRelease();

    Orb::Ptr<OrbOrb_NameToIdMapIn> newOrb_NameToIdMapIn(const Orb::Ptr<NameToIdMap>& map);
    void orb_NameToIdMapInIs(const Orb::Ptr<NameToIdMap>& map);
    template <typename T>
    Orb::Ptr<T> mountTable(const Orb::String& path, const OrbMemtab::MountInfo& info);
    void mountOutputs();
    void mountLeakStatus();
    void createSharedChildren();
    void unmount();

    ContainerRule containerRule(const L3::VrfName& name) const;
    /// A change of the VRF's conditions waits for its turn.
    void noteWhatIsNotDue(const L3::VrfName& name);
    void doCreateContainer(const L3::VrfName& name, VrfId vrfId);
    void createContainerParts(const L3::VrfName& name, VrfId vrfId);
    void doDeleteContainerParts(const L3::VrfName& name, VrfId vrfId);
    Orb::Ptr<VrfNameSet> containerNames() const;

    OrbMemtab::Mount mount_;
    std::vector<Orb::String> mounted_;
    /// VRFs that for a while were not to have a container, which nobody could look at then: what
    /// they have is an earlier life's.
    Orb::Ptr<VrfNameSet> wasNotDue_ = Orb::makePtr<VrfNameSet>();
    bool dying_ = false; // the last reference is gone
    OrbNameToIdMapWrapper orbNameToIdMapWrapper_;
    Orb::Ptr<OrbOrb_NameToIdMapIn> orbOrb_NameToIdMapIn_;
    OrbAllVrfStatusLocal orbAllVrfStatusLocal_;
};

} // namespace Routing::DirectNet
