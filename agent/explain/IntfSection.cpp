#include "agent/explain/IntfSection.h"

#include <algorithm>

#include "agent/device/DeviceInputs.h"
#include "agent/explain/IntfPlaces.h"
#include "agent/explain/VrfObstacles.h"
#include "directnet/root/RootSm.h"
#include "platform/interface/KernelNetInfo.h"

namespace Agent {

using Routing::DirectNet::IntfBacklog;

namespace {

/// Virtual addresses that a step looks at, most of which other interfaces carry.
constexpr int lookedAtOnce = 64;

/// Why the rules leave an address out, or its subnet.
template <typename Machine, typename Address>
std::vector<std::string> ownReasons(const Address& address) {
    if (Machine::yieldsNothing(address)) {
        return {address.isZero() ? "the zero address" : "link-local"};
    }
    if (!IntfBacklog::isRoutable(address.subnet())) {
        return {"length 0: its subnet never becomes a route"};
    }
    return {};
}

std::string joined(const std::vector<std::string>& reasons) {
    std::string text;
    for (const std::string& reason : reasons) {
        text += (text.empty() ? "" : "; ") + reason;
    }
    return text;
}

} // namespace

bool IntfSection::step(Sink& sink) {
    if (stage_ == Stage::end) {
        return false;
    }
    if (!stepIn(sink, stage_)) {
        stage_ = static_cast<Stage>(static_cast<int>(stage_) + 1);
    }
    return true;
}

/// Returns whether there may be more of the stage.
bool IntfSection::stepIn(Sink& sink, Stage stage) {
    using namespace Routing::DirectNet;
    const bool isVirtual = stage == Stage::virtual4 || stage == Stage::virtual6;
    if ((isAnothers() && stage != Stage::begin && stage != Stage::unpublished)
        || (isVirtual && options_.ownOnly)) {
        return false;
    }
    switch (stage) {
    case Stage::begin:
        if (options_.isThere) {
            appendInterface(sink);
        }
        return false;
    case Stage::unpublished:
        return stepUnpublished(sink);
    case Stage::primary:
        return stepPrimary(sink);
    case Stage::secondaries:
        return stepSecondary(sink);
    case Stage::ipv6:
        return stepIpv6(sink);
    case Stage::virtual4:
        return stepVirtual<Traits::IPv4>(sink, *view_.root.allVrfVirtualIpStatus(), virtual4_);
    case Stage::virtual6:
        return stepVirtual<Traits::IPv6>(sink, *view_.root.allVrfVirtualIp6Status(), virtual6_);
    case Stage::end:
        break;
    }
    return false;
}

bool IntfSection::stepUnpublished(Sink& sink) {
    if (!options_.link || unpublished_ == options_.link->link.unpublished.size()) {
        return false;
    }
    const Linux::NamedLink::Address& found = options_.link->link.unpublished[unpublished_++];
    const Lanx::IpGenAddr& address = found.address.addr();
    const unsigned len = found.address.len();
    const bool isIpv4 = address.af() == Lanx::AddressFamily::ipv4;
    Reasons reasons =
        isIpv4
            ? ownReasons<Routing::DirectNet::IpIntfSm>(Lanx::IpAddrWithMask(address.v4(), len))
            : ownReasons<Routing::DirectNet::Ip6IntfSm>(Lanx::Ip6AddrWithMask(address.v6(), len));
    if (!found.obstacle.empty()) {
        reasons.emplace(reasons.begin(), found.obstacle);
    }
    const char* const role = !isIpv4 ? "own" : found.isSecondary ? "secondary" : "primary";
    appendAddress(sink, found.address, role, std::move(reasons));
    return true;
}

bool IntfSection::stepPrimary(Sink& sink) {
    const auto* vrf = view_.inputs.ipStatus()->vrfIpIntfStatus(options_.vrf);
    const auto* status = vrf == nullptr ? nullptr : vrf->ipIntfStatus(options_.intf);
    if (status == nullptr || !status->activeAddrWithMask()) {
        return false;
    }
    const Lanx::IpAddrWithMask address = status->activeAddrWithMask();
    Reasons reasons;
    if (const Lanx::IntfId source = status->unnumberedIntfId(); !!source) {
        reasons.push_back("unnumbered: borrowed from " + std::string(source.name()));
    } else {
        reasons = ownReasons<Routing::DirectNet::IpIntfSm>(address);
    }
    appendAddress(sink, address, "primary", std::move(reasons));
    return false;
}

bool IntfSection::stepSecondary(Sink& sink) {
    const auto* vrf = view_.inputs.ipStatus()->vrfIpIntfStatus(options_.vrf);
    const auto* status = vrf == nullptr ? nullptr : vrf->ipIntfStatus(options_.intf);
    if (status == nullptr) {
        return false;
    }
    const auto& all = status->activeSecondaryWithMask();
    const auto* entry = secondary_ ? all.after(*secondary_) : all.first();
    if (entry == nullptr) {
        return false;
    }
    secondary_ = entry->key();
    Reasons reasons = ownReasons<Routing::DirectNet::IpIntfSm>(*secondary_);
    if (!entry->value()) {
        reasons = {"listed as not in use"};
    }
    appendAddress(sink, *secondary_, "secondary", std::move(reasons));
    return true;
}

bool IntfSection::stepIpv6(Sink& sink) {
    const auto* vrf = view_.inputs.ip6Status()->vrfIp6IntfStatus(options_.vrf);
    const auto* status = vrf == nullptr ? nullptr : vrf->intfStatus(options_.intf);
    if (status == nullptr) {
        return false;
    }
    const auto& all = status->addr();
    const auto* entry = ipv6_ ? all.after(*ipv6_) : all.first();
    if (entry == nullptr) {
        return false;
    }
    ipv6_ = entry->key();
    Reasons reasons = ownReasons<Routing::DirectNet::Ip6IntfSm>(*ipv6_);
    if (entry->value() == Ip6::AddressInfo()) {
        reasons = {"listed as not in use"};
    }
    appendAddress(sink, *ipv6_, "own", std::move(reasons));
    return true;
}

template <typename Family, typename Tables, typename Key>
bool IntfSection::stepVirtual(Sink& sink, const Tables& tables, std::optional<Key>& last) {
    using Machine = Routing::DirectNet::VrfVirtualIpStatusSm<Family>;
    const auto* table = tables.vrfVirtualIpStatus(options_.vrf);
    for (int i = 0; i < lookedAtOnce; ++i) {
        const auto* entry = table == nullptr ? nullptr
                            : last           ? table->virtualIp().after(*last)
                                             : table->virtualIp().first();
        if (entry == nullptr) {
            return false;
        }
        last = (*entry)->fwkKey();
        const bool* const carried = (*entry)->intfId().find(options_.intf);
        if (carried == nullptr) {
            continue;
        }
        const auto address = Machine::Virtual::addrWithMask(*last);
        Reasons reasons = ownReasons<Machine>(address);
        if (!*carried) {
            reasons = {"listed as not carried"};
        } else if (reasons.empty() && address.len() < Family::hostLen
                   && !table->subnetRouteEnabled()) {
            reasons = {"its subnet is no route: subnetRoutes is off"};
        }
        appendAddress(sink, address, "virtual", std::move(reasons));
        return true;
    }
    return true;
}

void IntfSection::appendInterface(Sink& sink) {
    InterfaceRow row{options_.intf, options_.vrf.value(), {}, device()};
    if (const auto name = netns()) {
        row.netns.name = name->value();
    }
    sink.interface(row);
    isSaid_ = true;
}

void IntfSection::appendAddress(Sink& sink, const Lanx::IpGenAddrWithMask& address,
                                const char* role, Reasons reasons) {
    const bool isVirtual = std::string_view(role) == "virtual";
    const bool isSaid = stage_ != Stage::unpublished && !isVirtual && isUnpublished(address);
    if (isSaid || !sink.wants(address)) {
        return;
    }
    if (!isSaid_) {
        appendInterface(sink);
    }
    if (!options_.elsewhere.empty()) {
        reasons = {options_.elsewhere};
    } else if (std::string obstacle = placeObstacle(!isVirtual); !obstacle.empty()) {
        reasons.insert(reasons.begin(), std::move(obstacle));
    }
    std::vector<ContributionRow> contributions;
    if (options_.elsewhere.empty() && !isAnothers()) {
        contributions = contributionsOf(view_, options_.vrf, {options_.intf, address, isVirtual});
    }
    AddressRow row{address, role, {}};
    const auto* container = view_.root.containerSm(options_.vrf);
    if (reasons.empty() && contributions.empty() && container != nullptr
        && container->intfBacklog()->waitingForRoom() > 0) {
        reasons.emplace_back("the tables have no room for it");
    }
    if (!reasons.empty()) {
        row.why = joined(reasons);
    }
    sink.address(row, contributions);
}

bool IntfSection::isUnpublished(const Lanx::IpGenAddrWithMask& address) const {
    return options_.link
           && std::ranges::binary_search(options_.link->link.unpublished, address, {},
                                         &Linux::NamedLink::Address::address);
}

/// Why nothing that the interface has in the VRF contributes; empty if it may.
std::string IntfSection::placeObstacle(bool needsDevice) {
    const std::string notUp = "VRF " + options_.vrf.value() + " is not up: ";
    if (isAnothers()) {
        return notUp + options_.link->obstacle;
    }
    const auto* container = view_.root.containerSm(options_.vrf);
    if (container == nullptr) {
        if (vrfObstacle_.empty()) {
            vrfObstacle_ = vrfObstacles(view_)[options_.vrf];
        }
        return notUp + vrfObstacle_;
    }
    if (!needsDevice || container->kernelIntfStatus()->kernelIntfPresent(options_.intf)) {
        return {};
    }
    return device() == "none" ? "no device in network namespace " + container->netNs().value()
                              : "not running";
}

/// Where the VRF is; nothing for one that is nowhere.
std::optional<Lanx::NamespaceName> IntfSection::netns() const {
    if (options_.link) {
        return options_.link->netns;
    }
    if (const auto* container = view_.root.containerSm(options_.vrf)) {
        return container->netNs();
    }
    const auto* status = view_.inputs.vrfs().allVrfStatusLocal()->vrf(options_.vrf);
    return status == nullptr ? std::nullopt : std::optional(status->netNs());
}

std::string IntfSection::device() const {
    const auto name = netns();
    if (!name) {
        return "none";
    }
    const auto* devices = kernelDevicesOf(view_, *name);
    const auto* device = devices == nullptr ? nullptr : devices->device().find(options_.intf);
    if (device == nullptr) {
        return "none";
    }
    return device->running() ? "running" : "not running";
}

} // namespace Agent
