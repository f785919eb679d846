#pragma once

#include <utility>

#include "directnet/model/FunctionName.h"
#include "directnet/model/Units.h"
#include "directnet/root/Ip6IntfSm.h"
#include "directnet/root/IpIntfSm.h"
#include "directnet/root/KernelIntfStatus.h"
#include "platform/ip/Ip6Status.h"
#include "platform/ip/Status.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// What IntfStatusSm is made from, has and says in a family, where the families differ in it.
template <typename Family>
class IntfStatusDeclarations;

template <>
class IntfStatusDeclarations<Traits::IPv4> : public Orb::Entity {
    ORB_ENTITY(IntfStatusDeclarations, "Routing::DirectNet::IpIntfStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const Ip::VrfIpIntfStatus>, vrfIpIntfStatus),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog),
                    (Orb::Ptr<KernelIntfStatus>, kernelIntfStatus))
    ORB_CHILDREN(262, IpIntfSm, ipIntfSm)
    ORB_ATTRIBUTE(263, bool, initialized)

  public:
    void handleIpIntfStatus() { handleIntfStatus(); }

    using VrfStatus = Ip::VrfIpIntfStatus;
    const Orb::Ptr<const VrfStatus>& vrfStatus() const { return vrfIpIntfStatus(); }

  protected:
    explicit IntfStatusDeclarations(Arguments arguments) : arguments_(std::move(arguments)) {}

    virtual void handleIntfStatus() = 0;

    using IntfStatus = Ip::IpIntfStatus;
    static constexpr Orb::AttributeId intfStatusAttribute = VrfStatus::ipIntfStatusAttribute;
    const auto& intfStatuses() const { return vrfIpIntfStatus()->ipIntfStatus(); }
    IntfStatus* intfStatus(Lanx::IntfId id) const { return vrfIpIntfStatus()->ipIntfStatus(id); }

    IpIntfSm* child(Lanx::IntfId intfId) const { return ipIntfSm(intfId); }
    template <typename... Args>
    void childIs(const Args&... args) {
        ipIntfSmIs(args...);
    }
    void childDel(Lanx::IntfId intfId) { ipIntfSmDel(intfId); }
    void childDelAll() { ipIntfSmDelAll(); }

    static constexpr const char* absentText = " not present in vrfIpIntfStatus";
    static constexpr const char* createText = " IPv4 SM create";
    static constexpr const char* deleteText = " IPv4 SM delete";
};

template <>
class IntfStatusDeclarations<Traits::IPv6> : public Orb::Entity {
    ORB_ENTITY(IntfStatusDeclarations, "Routing::DirectNet::Ip6IntfStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const Ip6::VrfIp6IntfStatus>, vrfIp6IntfStatus),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog),
                    (Orb::Ptr<KernelIntfStatus>, kernelIntfStatus))
    ORB_CHILDREN(262, Ip6IntfSm, ip6IntfSm)
    ORB_ATTRIBUTE(263, bool, initialized)

  public:
    void handleIp6IntfStatus() { handleIntfStatus(); }

    using VrfStatus = Ip6::VrfIp6IntfStatus;
    const Orb::Ptr<const VrfStatus>& vrfStatus() const { return vrfIp6IntfStatus(); }

  protected:
    explicit IntfStatusDeclarations(Arguments arguments) : arguments_(std::move(arguments)) {}

    virtual void handleIntfStatus() = 0;

    using IntfStatus = Ip6::IntfStatus;
    static constexpr Orb::AttributeId intfStatusAttribute = VrfStatus::intfStatusAttribute;
    const auto& intfStatuses() const { return vrfIp6IntfStatus()->intfStatus(); }
    IntfStatus* intfStatus(Lanx::IntfId id) const { return vrfIp6IntfStatus()->intfStatus(id); }

    Ip6IntfSm* child(Lanx::IntfId intfId) const { return ip6IntfSm(intfId); }
    template <typename... Args>
    void childIs(const Args&... args) {
        ip6IntfSmIs(args...);
    }
    void childDel(Lanx::IntfId intfId) { ip6IntfSmDel(intfId); }
    void childDelAll() { ip6IntfSmDelAll(); }

    static constexpr const char* absentText = " not present in vrfIp6IntfStatus";
    static constexpr const char* createText = " IPv6 SM create";
    static constexpr const char* deleteText = " IPv6 SM delete";
};

/// The interfaces of a VRF that has interface status of the family: one address machine per
/// interface that both has a status there and is present in the kernel.
template <typename Family>
class IntfStatusSm : public IntfStatusDeclarations<Family> {
  public:
    using Declarations = IntfStatusDeclarations<Family>;
    using typename Declarations::Arguments;
    using typename Declarations::OrbSelf;

    explicit IntfStatusSm(Arguments arguments);
    ~IntfStatusSm() override;

    void handleInitialized() { this->initializedIs(true); }

    /// Looks at one interface.
    void handleIntfId(Lanx::IntfId intfId);
    /// Looks at every interface that the kernel has.
    void handleKernelIntf();

    const Orb::Ptr<const Interface::DeviceIntfStatusDir>& kernelIntfDir() const {
        return this->kernelIntfStatus()->kernelIntfStatusDir();
    }

    friend std::ostream& operator<<(std::ostream& out, const IntfStatusSm& sm) {
        return out << shortName(OrbSelf::orbTypeName) << ' ' << sm.vrfStatus()->vrfName();
    }

  private:
    using typename Declarations::IntfStatus;
    using typename Declarations::VrfStatus;

    class OrbVrfStatus : public Orb::InputReactor<IntfStatusSm, VrfStatus> {
      public:
        using Orb::InputReactor<IntfStatusSm, VrfStatus>::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    class OrbKernelIntfDir
        : public Orb::InputReactor<IntfStatusSm, Interface::DeviceIntfStatusDir> {
      public:
        using Orb::InputReactor<IntfStatusSm, Interface::DeviceIntfStatusDir>::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    /// Looks at every interface that has a status.
    void handleIntfStatus() override;

    /// The interface's status if it is to have a machine, else null.
    Orb::Ptr<const IntfStatus> dueStatus(Lanx::IntfId intfId) const;

    OrbVrfStatus orbVrfStatus_;
    OrbKernelIntfDir orbKernelIntfDir_;
};

using IpIntfStatusSm = IntfStatusSm<Traits::IPv4>;
using Ip6IntfStatusSm = IntfStatusSm<Traits::IPv6>;

extern template class IntfStatusSm<Traits::IPv4>;
extern template class IntfStatusSm<Traits::IPv6>;

} // namespace Routing::DirectNet
