#include "directnet/root/Ip6IntfStatusSm.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(Ip6IntfStatusSm)
ORB_REGISTER(Ip6IntfStatusSm, Ip6IntfStatusSm, unitDirectNet, 6)

Ip6IntfStatusSm::Ip6IntfStatusSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbVrfIp6IntfStatus_(this), orbKernelIntfDir_(this) {
    orbVrfIp6IntfStatus_.notifierIs(vrfIp6IntfStatus());
    orbKernelIntfDir_.notifierIs(kernelIntfDir());
    handleIp6IntfStatus();
    handleKernelIntf();
    handleInitialized();
}

Ip6IntfStatusSm::~Ip6IntfStatusSm() {
    orbDoZombieReactors(true);
    ip6IntfSmDelAll();
}

bool Ip6IntfStatusSm::hasIntfStatus(Lanx::IntfId intfId) const {
    return vrfIp6IntfStatus()->intfStatus(intfId) != nullptr;
}

bool Ip6IntfStatusSm::hasIntfSm(Lanx::IntfId intfId) const {
    const auto* sm = ip6IntfSm(intfId);
    return sm != nullptr && sm->ip6IntfStatus().get() == vrfIp6IntfStatus()->intfStatus(intfId);
}

void Ip6IntfStatusSm::doCreateIntfSm(Lanx::IntfId intfId) {
    using Status = std::remove_pointer_t<decltype(vrfIp6IntfStatus()->intfStatus(intfId))>;
    ip6IntfSmIs(intfId, Orb::Ptr<const Status>(vrfIp6IntfStatus()->intfStatus(intfId)),
                intfViaSetConfig(), intfBacklog());
}

} // namespace Routing::DirectNet
