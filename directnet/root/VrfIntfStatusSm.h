#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "directnet/ready/GrState.h"
#include "directnet/ready/VrfReadyStatus.h"
#include "directnet/root/IntfStatusSm.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// What VrfIntfStatusSm is made from, has and says in a family, where the families differ in it.
template <typename Family>
class VrfIntfStatusDeclarations;

template <>
class VrfIntfStatusDeclarations<Traits::IPv4> : public Orb::Entity {
    ORB_ENTITY(VrfIntfStatusDeclarations, "Routing::DirectNet::VrfIpIntfStatusSm")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName), (Orb::Ptr<const Ip::Status>, ipStatus, Orb::mayBeNull),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog),
                    (Orb::Ptr<KernelIntfStatus>, kernelIntfStatus),
                    (Orb::Ptr<const GrState>, grState), (Orb::Ptr<VrfReadyStatus>, vrfReadyStatus))
    ORB_KEY(L3::VrfName, vrfName)
    ORB_CHILD(265, IpIntfStatusSm, ipIntfStatusSm)
    ORB_ATTRIBUTE(266, bool, initialized)

  public:
    void handleVrfIpIntfStatus(const L3::VrfName& changed) { handleVrfIntfStatus(changed); }

  protected:
    explicit VrfIntfStatusDeclarations(Arguments arguments) : arguments_(std::move(arguments)) {}

    virtual void handleVrfIntfStatus(const L3::VrfName& changed) = 0;

    using Status = Ip::Status;
    static constexpr Orb::AttributeId vrfStatusAttribute = Ip::Status::vrfIpIntfStatusAttribute;
    const Orb::Ptr<const Status>& status() const { return ipStatus(); }
    auto* vrfStatus() const {
        return ipStatus() == nullptr ? nullptr : ipStatus()->vrfIpIntfStatus(vrfName());
    }

    const Orb::Ptr<IpIntfStatusSm>& child() const { return ipIntfStatusSm(); }
    template <typename... Args>
    void childIs(const Args&... args) {
        ipIntfStatusSmIs(args...);
    }
    void childDel() { ipIntfStatusSmDel(); }

    void readyIs() { vrfReadyStatus()->v4DirectNetsReadyIs(true); }

    static constexpr const char* emptyNameText = "Empty vrfName, expected a valid vrfName";
    static constexpr const char* createText = "Instantiating IpIntfStatusSm";
    static constexpr const char* ringCreateText = " initializing ipIntfStatusSm vrf=";
    static constexpr const char* deleteText = "Destroying ipIntfStatusSm";
    static constexpr const char* ringDeleteText = " deleting ipIntfStatusSm vrf=";
    static constexpr const char* handlerName = "VrfIpIntfStatusSm::handleVrfIpIntfStatus";
};

template <>
class VrfIntfStatusDeclarations<Traits::IPv6> : public Orb::Entity {
    ORB_ENTITY(VrfIntfStatusDeclarations, "Routing::DirectNet::VrfIp6IntfStatusSm")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName),
                    (Orb::Ptr<const Ip6::Status>, ip6Status, Orb::mayBeNull),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog),
                    (Orb::Ptr<KernelIntfStatus>, kernelIntfStatus),
                    (Orb::Ptr<const GrState>, grState), (Orb::Ptr<VrfReadyStatus>, vrfReadyStatus))
    ORB_KEY(L3::VrfName, vrfName)
    ORB_CHILD(265, Ip6IntfStatusSm, ip6IntfStatusSm)
    ORB_ATTRIBUTE(266, bool, initialized)

  public:
    void handleVrfIp6IntfStatus(const L3::VrfName& changed) { handleVrfIntfStatus(changed); }

  protected:
    explicit VrfIntfStatusDeclarations(Arguments arguments) : arguments_(std::move(arguments)) {}

    virtual void handleVrfIntfStatus(const L3::VrfName& changed) = 0;

    using Status = Ip6::Status;
    static constexpr Orb::AttributeId vrfStatusAttribute = Ip6::Status::vrfIp6IntfStatusAttribute;
    const Orb::Ptr<const Status>& status() const { return ip6Status(); }
    auto* vrfStatus() const {
        return ip6Status() == nullptr ? nullptr : ip6Status()->vrfIp6IntfStatus(vrfName());
    }

    const Orb::Ptr<Ip6IntfStatusSm>& child() const { return ip6IntfStatusSm(); }
    template <typename... Args>
    void childIs(const Args&... args) {
        ip6IntfStatusSmIs(args...);
    }
    void childDel() { ip6IntfStatusSmDel(); }

    void readyIs() { vrfReadyStatus()->v6DirectNetsReadyIs(true); }

    static constexpr const char* emptyNameText = "Empty vrfName";
    static constexpr const char* createText = "Initializing ip6IntfStatusSm";
    static constexpr const char* ringCreateText = " initializing ip6IntfStatusSm vrf=";
    static constexpr const char* deleteText = "Destroying ipIntfStatusSm";
    static constexpr const char* ringDeleteText = " deleting ip6IntfStatusSm vrf=";
    static constexpr const char* handlerName = "VrfIp6IntfStatusSm::handleVrfIp6IntfStatus";
};

/// A VRF's side of one family: owns the family's IntfStatusSm exactly while the VRF has interface
/// status of that family, and declares the VRF's routes of the family ready once, when its backlog
/// has been drained and no graceful restart holds it back.
template <typename Family>
class VrfIntfStatusSm : public VrfIntfStatusDeclarations<Family> {
  public:
    using Declarations = VrfIntfStatusDeclarations<Family>;
    using typename Declarations::Arguments;
    using typename Declarations::OrbSelf;

    explicit VrfIntfStatusSm(Arguments arguments);
    ~VrfIntfStatusSm() override;

    void handleInitialized();

    /// Called at start, whenever a drain has emptied the backlog, and when readiness may be
    /// verified. Interface changes are not looked at: they fill the backlog, which is drained.
    void maybeSetRoutesReady();

    friend std::ostream& operator<<(std::ostream& out, const VrfIntfStatusSm& sm) {
        return out << shortName(OrbSelf::orbTypeName) << ' ' << sm.vrfName();
    }

  private:
    using typename Declarations::Status;

    class OrbStatus : public Orb::InputReactor<VrfIntfStatusSm, Status> {
      public:
        using Orb::InputReactor<VrfIntfStatusSm, Status>::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    /// What `ReactorBase` watches decides about readiness with the attribute of that number.
    template <typename ReactorBase, Orb::AttributeId attribute>
    class OrbReadiness : public ReactorBase {
      public:
        explicit OrbReadiness(VrfIntfStatusSm* sm) : ReactorBase(sm, attribute) {}
        void onAttribute(Orb::AttributeId id, const void*) override {
            if (id == attribute) {
                this->owner()->maybeSetRoutesReady();
            }
        }
        void notifierIs(Orb::Ptr<const typename ReactorBase::Watched> watched) override {
            ReactorBase::notifierIs(std::move(watched));
            this->owner()->maybeSetRoutesReady();
        }
    };
    using OrbIntfBacklog = OrbReadiness<Orb::Reactor<VrfIntfStatusSm, IntfBacklog>,
                                        IntfBacklog::backlogEmptyAttribute>;
    using OrbGrState = OrbReadiness<Orb::InputReactor<VrfIntfStatusSm, GrState>,
                                    GrState::startReadyVerificationAttribute>;

    void handleVrfIntfStatus(const L3::VrfName& changed) override;
    void doCreateChild();

    OrbStatus orbStatus_;
    OrbIntfBacklog orbIntfBacklog_;
    OrbGrState orbGrState_;
};

using VrfIpIntfStatusSm = VrfIntfStatusSm<Traits::IPv4>;
using VrfIp6IntfStatusSm = VrfIntfStatusSm<Traits::IPv6>;

extern template class VrfIntfStatusSm<Traits::IPv4>;
extern template class VrfIntfStatusSm<Traits::IPv6>;

} // namespace Routing::DirectNet
