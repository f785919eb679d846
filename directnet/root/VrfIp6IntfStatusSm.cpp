#include "directnet/root/VrfIp6IntfStatusSm.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(VrfIp6IntfStatusSm)
ORB_REGISTER(VrfIp6IntfStatusSm, VrfIp6IntfStatusSm, unitDirectNet, 0)

VrfIp6IntfStatusSm::VrfIp6IntfStatusSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbIp6Status_(this), orbIntfBacklog_(this),
      orbGrState_(this) {
    orbIp6Status_.notifierIs(ip6Status());
    orbIntfBacklog_.notifierIs(intfBacklog());
    orbGrState_.notifierIs(grState());
    handleInitialized();
}

VrfIp6IntfStatusSm::~VrfIp6IntfStatusSm() {
    orbDoZombieReactors(true);
    ip6IntfStatusSmDel();
}

void VrfIp6IntfStatusSm::doCreateChild() {
    const Orb::Ptr<const Ip6::VrfIp6IntfStatus> status(ip6Status()->vrfIp6IntfStatus(vrfName()));
    if (ip6IntfStatusSm() != nullptr && ip6IntfStatusSm()->vrfIp6IntfStatus() != status) {
        ip6IntfStatusSmDel(); // its withdrawals must not undo what its successor contributes
    }
    ip6IntfStatusSmIs(status, intfViaSetConfig(), intfBacklog(), kernelIntfStatus());
}

} // namespace Routing::DirectNet
