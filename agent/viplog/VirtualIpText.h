#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "agent/base/Utf8.h"
#include "agent/document/JsonWriter.h"
#include "platform/lanx/IntfId.h"
#include "platform/virtualip/VirtualIp6IntfStatus.h"
#include "platform/virtualip/VirtualIpIntfStatus.h"

namespace Agent {

inline std::string addressText(const VirtualIp::VrfIpWithMaskPair& key) {
    return key.ipAddrWithMask().toString();
}
inline std::string addressText(const VirtualIp::VrfIpPair& key) { return key.ipAddr().toString(); }

/// The interfaces of a virtual address, by name, and whether they carry it.
template <typename VirtualIp>
std::vector<std::pair<Lanx::IntfId, bool>> interfacesOf(const VirtualIp& virtualIp) {
    std::vector<std::pair<Lanx::IntfId, bool>> interfaces;
    for (const auto& [intfId, carried] : virtualIp.intfId()) {
        interfaces.emplace_back(intfId, carried);
    }
    std::ranges::sort(interfaces);
    return interfaces;
}

/// Those that carry it, each behind two spaces.
template <typename VirtualIp>
std::string interfacesText(const VirtualIp& virtualIp) {
    std::string text;
    for (const auto& [intfId, carried] : interfacesOf(virtualIp)) {
        text += carried ? "  " + printable(intfId.name()) : "";
    }
    return text;
}

/// Writes all of them as an object.
template <typename VirtualIp>
void writeInterfaces(JsonWriter& out, const VirtualIp& virtualIp) {
    out.beginObject();
    for (const auto& [intfId, carried] : interfacesOf(virtualIp)) {
        out.member(intfId.name(), carried);
    }
    out.endObject();
}

inline std::string subnetRoutesText(bool isOn) {
    return std::string("subnet routes ") + (isOn ? "on" : "off");
}

} // namespace Agent
