#include "directnet/root/IpIntfStatusSm.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IpIntfStatusSm)
ORB_REGISTER(IpIntfStatusSm, IpIntfStatusSm, unitDirectNet, 7)

IpIntfStatusSm::IpIntfStatusSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbVrfIpIntfStatus_(this), orbKernelIntfDir_(this) {
    orbVrfIpIntfStatus_.notifierIs(vrfIpIntfStatus());
    orbKernelIntfDir_.notifierIs(kernelIntfDir());
    handleIpIntfStatus();
    handleKernelIntf();
    handleInitialized();
}

IpIntfStatusSm::~IpIntfStatusSm() {
    orbDoZombieReactors(true);
    ipIntfSmDelAll();
}

bool IpIntfStatusSm::hasIntfStatus(Lanx::IntfId intfId) const {
    return vrfIpIntfStatus()->ipIntfStatus(intfId) != nullptr;
}

bool IpIntfStatusSm::hasIntfSm(Lanx::IntfId intfId) const {
    const auto* sm = ipIntfSm(intfId);
    return sm != nullptr && sm->ipIntfStatus().get() == vrfIpIntfStatus()->ipIntfStatus(intfId);
}

void IpIntfStatusSm::doCreateIntfSm(Lanx::IntfId intfId) {
    using Status = std::remove_pointer_t<decltype(vrfIpIntfStatus()->ipIntfStatus(intfId))>;
    ipIntfSmIs(intfId, Orb::Ptr<const Status>(vrfIpIntfStatus()->ipIntfStatus(intfId)),
               intfViaSetConfig(), intfBacklog());
}

} // namespace Routing::DirectNet
