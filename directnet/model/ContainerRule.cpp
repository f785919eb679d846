#include "directnet/model/ContainerRule.h"

#include "platform/vrf/NameToIdMap.h"

namespace Routing::DirectNet {

ContainerRule::ContainerRule(const L3::VrfName& name, const Vrf::VrfIdMap::NameToIdMapWrapper* ids,
                             const Ip::AllVrfStatusLocal& vrfs)
    : name_(name) {
    if (ids == nullptr || !ids->vrfIdExists(name)) {
        missing_ = Missing::id;
    } else if (name == L3::VrfName::defaultVrf()) {
        missing_ = Missing::nothing;
    } else if (const Ip::VrfStatusLocal* status = vrfs.vrf(name); status == nullptr) {
        missing_ = Missing::status;
    } else if (state_ = status->state(); state_ != Ip::VrfState::active) {
        missing_ = Missing::activity;
    }
}

std::string ContainerRule::missing() const {
    switch (missing_) {
    case Missing::nothing:
        break;
    case Missing::id:
        return "VRF name to ID map has been deleted for VRF " + name_.value();
    case Missing::status:
        return "allVrfStatusLocal missing for VRF " + name_.value();
    case Missing::activity:
        return "allVrfStatusLocal not active for VRF " + name_.value() + " state "
               + std::to_string(static_cast<unsigned>(state_));
    }
    return {};
}

std::string_view ContainerRule::lack() const {
    switch (missing_) {
    case Missing::nothing:
        break;
    case Missing::id:
        return "it has no id";
    case Missing::status:
        return "it is not set up on this device";
    case Missing::activity:
        return "it is not active";
    }
    return {};
}

} // namespace Routing::DirectNet
