#include "directnet/root/VrfIpIntfStatusSm.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(VrfIpIntfStatusSm)
ORB_REGISTER(VrfIpIntfStatusSm, VrfIpIntfStatusSm, unitDirectNet, 1)

VrfIpIntfStatusSm::VrfIpIntfStatusSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbIpStatus_(this), orbIntfBacklog_(this),
      orbGrState_(this) {
    orbIpStatus_.notifierIs(ipStatus());
    orbIntfBacklog_.notifierIs(intfBacklog());
    orbGrState_.notifierIs(grState());
    handleInitialized();
}

VrfIpIntfStatusSm::~VrfIpIntfStatusSm() {
    orbDoZombieReactors(true);
    ipIntfStatusSmDel();
}

void VrfIpIntfStatusSm::doCreateChild() {
    const Orb::Ptr<const Ip::VrfIpIntfStatus> status(ipStatus()->vrfIpIntfStatus(vrfName()));
    if (ipIntfStatusSm() != nullptr && ipIntfStatusSm()->vrfIpIntfStatus() != status) {
        ipIntfStatusSmDel(); // its withdrawals must not undo what its successor contributes
    }
    ipIntfStatusSmIs(status, intfViaSetConfig(), intfBacklog(), kernelIntfStatus());
}

} // namespace Routing::DirectNet
