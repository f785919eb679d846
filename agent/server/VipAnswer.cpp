#include "agent/server/VipAnswer.h"

#include "agent/base/JsonString.h"

namespace Agent {

namespace {

Lanx::IpAddrWithMask addressOf(const VirtualIp::VrfIpWithMaskPair& key) {
    return key.ipAddrWithMask();
}
Lanx::Ip6Addr addressOf(const VirtualIp::VrfIpPair& key) { return key.ipAddr(); }

} // namespace

bool VipAnswer::appendNext(std::string& out) {
    if (vrfs_.vrf() != nullptr
        && (appendNextOf(*view_.root.allVrfVirtualIpStatus(), last4_, out)
            || appendNextOf(*view_.root.allVrfVirtualIp6Status(), last6_, out))) {
        return true;
    }
    last4_.reset();
    last6_.reset();
    return vrfs_.advance();
}

template <typename AllVrfs, typename Key>
bool VipAnswer::appendNextOf(const AllVrfs& allVrfs, std::optional<Key>& last,
                             std::string& out) const {
    const L3::VrfName& name = vrfs_.vrf()->vrfName();
    const auto* status = allVrfs.vrfVirtualIpStatus(name);
    if (status == nullptr) {
        return false;
    }
    const auto& table = status->virtualIp();
    const auto* entry = last ? table.after(*last) : table.first();
    if (entry == nullptr) {
        return false;
    }
    last = (*entry)->fwkKey();
    out += "{\"vrf\":";
    appendJsonString(out, name.value());
    out += ",\"address\":\"";
    addressOf(*last).appendTo(out);
    out += "\",\"intfs\":[";
    const char* separator = "";
    for (const auto& intf : (*entry)->intfId()) {
        out += separator;
        appendJsonString(out, intf.key().name());
        separator = ",";
    }
    out += "],\"subnetRoutes\":";
    out += status->subnetRouteEnabled() ? "true}\n" : "false}\n";
    return true;
}

} // namespace Agent
