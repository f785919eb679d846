#include "agent/explain/IntfPlaces.h"

#include <algorithm>

#include "agent/device/DeviceInputs.h"
#include "directnet/root/RootInputs.h"
#include "directnet/root/RootSm.h"
#include "platform/interface/KernelNetInfo.h"

namespace Agent {

using Places = std::vector<IntfSection::Options>;

namespace {

void addTold(const AgentView& view, Lanx::IntfId intf, Places& places) {
    const auto add = [&](const L3::VrfName& vrf) {
        if (!isIn(places, vrf)) {
            places.push_back({.intf = intf, .vrf = vrf, .isThere = true});
        }
    };
    for (const auto& vrf : view.inputs.ipStatus()->vrfIpIntfStatus()) {
        if (vrf->ipIntfStatus(intf) != nullptr) {
            add(vrf->vrfName());
        }
    }
    for (const auto& vrf : view.inputs.ip6Status()->vrfIp6IntfStatus()) {
        if (vrf->intfStatus(intf) != nullptr) {
            add(vrf->vrfName());
        }
    }
}

} // namespace

Places placesOf(const AgentView& view, Lanx::IntfId intf) {
    Places places;
    if (view.links != nullptr) {
        for (KernelLink& link : view.links->links(intf)) {
            const L3::VrfName vrf = link.vrf;
            places.push_back({.intf = intf, .vrf = vrf, .link = std::move(link), .isThere = true});
        }
    }
    addTold(view, intf, places);
    if (!places.empty()) {
        return places;
    }
    for (const auto& container : view.root.containerSm()) {
        const auto* devices = kernelDevicesOf(view, container->netNs());
        if (devices != nullptr && devices->device().contains(intf)) {
            places.push_back({.intf = intf, .vrf = container->vrfName(), .isThere = true});
        }
    }
    return places;
}

bool isIn(const Places& places, const L3::VrfName& vrf) {
    return std::ranges::any_of(places, [&](const IntfSection::Options& place) {
        return place.vrf == vrf && (!place.link || place.link->obstacle.empty());
    });
}

const KernelNetInfo::Status* kernelDevicesOf(const AgentView& view,
                                             const Lanx::NamespaceName& netns) {
    return dynamic_cast<const KernelNetInfo::Status*>(
        view.inputs.entityManager()->entity(Routing::DirectNet::MountPaths::kernelDevices(netns)));
}

} // namespace Agent
