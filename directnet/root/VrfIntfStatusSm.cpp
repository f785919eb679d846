#include "directnet/root/VrfIntfStatusSm.h"

#include "directnet/model/Trace.h"
#include "directnet/root/TraceUnit.h"
#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(VrfIntfStatusDeclarations<Traits::IPv4>)
ORB_DEFINE_TYPE(VrfIntfStatusDeclarations<Traits::IPv6>)
ORB_REGISTER(VrfIp6IntfStatusSm, VrfIp6IntfStatusSm, unitDirectNet, 0)
ORB_REGISTER(VrfIpIntfStatusSm, VrfIpIntfStatusSm, unitDirectNet, 1)

template <typename Family>
void VrfIntfStatusSm<Family>::OrbStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == VrfIntfStatusSm::vrfStatusAttribute) {
        this->owner()->handleVrfIntfStatus(Orb::keyAs<L3::VrfName>(key));
    }
}

template <typename Family>
VrfIntfStatusSm<Family>::VrfIntfStatusSm(Arguments arguments)
    : Declarations(std::move(arguments)), orbStatus_(this), orbIntfBacklog_(this),
      orbGrState_(this) {
    orbStatus_.notifierIs(this->status());
    orbIntfBacklog_.notifierIs(this->intfBacklog());
    orbGrState_.notifierIs(this->grState());
    handleInitialized();
}

template <typename Family>
VrfIntfStatusSm<Family>::~VrfIntfStatusSm() {
    this->orbDoZombieReactors(true);
    this->childDel();
}

template <typename Family>
void VrfIntfStatusSm<Family>::handleInitialized() {
    if (this->initialized()) {
        DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 8, *this, " already initialized");
        return;
    }
    DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 8, *this);
    this->initializedIs(true);
    handleVrfIntfStatus(this->vrfName());
    maybeSetRoutesReady();
}

template <typename Family>
void VrfIntfStatusSm<Family>::handleVrfIntfStatus(const L3::VrfName& changed) {
    constexpr const char* function = Declarations::handlerName;
    if (!this->initialized() || changed != this->vrfName()) {
        return;
    }
    if (!changed) {
        DIRECTNET_TRACE_IN(function, 8, Declarations::emptyNameText);
        return;
    }
    if (this->vrfStatus() != nullptr) {
        DIRECTNET_TRACE_IN(function, 8, Declarations::createText);
        DIRECTNET_RINGLOG_IN(function, Declarations::ringCreateText, changed);
        doCreateChild();
    } else {
        DIRECTNET_TRACE_IN(function, 8, Declarations::deleteText);
        DIRECTNET_RINGLOG_IN(function, Declarations::ringDeleteText, changed);
        this->childDel();
    }
}

template <typename Family>
void VrfIntfStatusSm<Family>::doCreateChild() {
    using VrfStatus = std::remove_pointer_t<decltype(this->vrfStatus())>;
    const Orb::Ptr<const VrfStatus> status(this->vrfStatus());
    if (this->child() != nullptr && this->child()->vrfStatus() != status) {
        this->childDel(); // its withdrawals must not undo what its successor contributes
    }
    this->childIs(status, this->intfViaSetConfig(), this->intfBacklog(), this->kernelIntfStatus());
}

template <typename Family>
void VrfIntfStatusSm<Family>::maybeSetRoutesReady() {
    if (!this->initialized()) {
        return;
    }
    if (this->grState()->gracefulRestart() && !this->grState()->startReadyVerification()) {
        DIRECTNET_TRACE_IN(
            DIRECTNET_THIS_FUNCTION, 8, "Returning without setting ready for ", Family::version,
            " connected routes as startReadyVerification not set yet for vrf : ", this->vrfName());
        return;
    }
    const bool childIsStarting = this->child() != nullptr && !this->child()->initialized();
    const IntfBacklog& backlog = *this->intfBacklog();
    if (childIsStarting || !backlog.backlog().empty() || backlog.waitingForRoom() > 0) {
        DIRECTNET_TRACE_IN(
            DIRECTNET_THIS_FUNCTION, 8, "Returning without setting ready for ", Family::version,
            " connected routes as intfBacklog not empty yet for vrf: ", this->vrfName());
        return;
    }
    DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 7,
                       "Backlog empty count : ", backlog.backlogEmpty());
    DIRECTNET_DUALLOG_IN(DIRECTNET_THIS_FUNCTION, 0, "Setting ready for ", Family::version,
                         " connected routes for vrf : ", this->vrfName());
    this->readyIs();
}

template class VrfIntfStatusSm<Traits::IPv4>;
template class VrfIntfStatusSm<Traits::IPv6>;

} // namespace Routing::DirectNet
