#include "directnet/root/IntfStatusSm.h"

#include "directnet/model/Trace.h"
#include "directnet/root/TraceUnit.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IntfStatusDeclarations<Traits::IPv4>)
ORB_DEFINE_TYPE(IntfStatusDeclarations<Traits::IPv6>)
ORB_REGISTER(Ip6IntfStatusSm, Ip6IntfStatusSm, unitDirectNet, 6)
ORB_REGISTER(IpIntfStatusSm, IpIntfStatusSm, unitDirectNet, 7)

template <typename Family>
void IntfStatusSm<Family>::OrbVrfStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == IntfStatusSm::intfStatusAttribute) {
        this->owner()->handleIntfId(Orb::keyAs<Lanx::IntfId>(key));
    }
}

template <typename Family>
void IntfStatusSm<Family>::OrbKernelIntfDir::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == Interface::DeviceIntfStatusDir::intfStatusAndDeviceNameAttribute) {
        this->owner()->handleIntfId(Orb::keyAs<Lanx::IntfId>(key));
    }
}

template <typename Family>
IntfStatusSm<Family>::IntfStatusSm(Arguments arguments)
    : Declarations(std::move(arguments)), orbVrfStatus_(this), orbKernelIntfDir_(this) {
    orbVrfStatus_.notifierIs(this->vrfStatus());
    orbKernelIntfDir_.notifierIs(kernelIntfDir());
    handleIntfStatus();
    handleKernelIntf();
    handleInitialized();
}

template <typename Family>
IntfStatusSm<Family>::~IntfStatusSm() {
    this->orbDoZombieReactors(true);
    this->childDelAll();
}

template <typename Family>
Orb::Ptr<const typename IntfStatusSm<Family>::IntfStatus>
IntfStatusSm<Family>::dueStatus(Lanx::IntfId intfId) const {
    constexpr const char* function = functionName<OrbSelf, FunctionText("handleIntfId")>.text;
    const IntfStatus* status = this->intfStatus(intfId);
    if (status == nullptr) {
        DIRECTNET_TRACE_IN(function, 8, *this, ' ', intfId, Declarations::absentText);
        return nullptr;
    }
    if (!this->kernelIntfStatus()->kernelIntfPresent(intfId)) {
        DIRECTNET_TRACE_IN(function, 8, *this, ' ', intfId, " not present in kernelIntfStatus");
        return nullptr;
    }
    DIRECTNET_TRACE_IN(function, 8, *this, ' ', intfId, " all conditions met");
    return Orb::Ptr<const IntfStatus>(status);
}

template <typename Family>
void IntfStatusSm<Family>::handleIntfId(Lanx::IntfId intfId) {
    const Orb::Ptr<const IntfStatus> status = dueStatus(intfId);
    const auto* present = this->child(intfId);
    if (status != nullptr && present != nullptr && present->intfStatus() == status) {
        DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 8, *this, ' ', intfId, " SM exists");
    } else if (status != nullptr) {
        // One of a status that went and came back while nobody could look is not this one's.
        this->childDel(intfId);
        DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 7, *this, ' ', intfId, " create SM");
        DIRECTNET_RINGLOG_IN(DIRECTNET_THIS_FUNCTION, intfId, Declarations::createText);
        this->childIs(intfId, status, this->intfViaSetConfig(), this->intfBacklog());
    } else if (present != nullptr) {
        DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 7, *this, ' ', intfId, " delete SM");
        DIRECTNET_RINGLOG_IN(DIRECTNET_THIS_FUNCTION, intfId, Declarations::deleteText);
        this->childDel(intfId);
    } else {
        DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 8, *this, ' ', intfId, " no SM");
    }
}

template <typename Family>
void IntfStatusSm<Family>::handleIntfStatus() {
    const auto& statuses = this->intfStatuses();
    for (const auto* status = statuses.first(); status != nullptr;) {
        const Lanx::IntfId intfId = (*status)->intfId();
        handleIntfId(intfId);
        status = statuses.after(intfId);
    }
}

template <typename Family>
void IntfStatusSm<Family>::handleKernelIntf() {
    Orb::forEachKey(kernelIntfDir()->intfStatusAndDeviceName(),
                    [this](Lanx::IntfId intfId) { handleIntfId(intfId); });
}

template class IntfStatusSm<Traits::IPv4>;
template class IntfStatusSm<Traits::IPv6>;

} // namespace Routing::DirectNet
