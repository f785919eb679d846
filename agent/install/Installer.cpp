#include "agent/install/Installer.h"

#include <algorithm>
#include <linux/rtnetlink.h>
#include <utility>

#include "agent/device/DeviceInputs.h"
#include "directnet/root/RootSm.h"

namespace Agent {

using Lanx::AddressFamily;

namespace {

/// Seconds that the removal of everything may take.
constexpr double longestFinish = 30;

constexpr std::string_view apart = "its VRFs are in different network namespaces";
constexpr std::string_view cannotAnswer = "in a VRF device the kernel cannot answer from it";

/// The scope of a local route; IPv6 has none.
constexpr std::uint8_t localScope(AddressFamily af) {
    return af == AddressFamily::ipv4 ? RT_SCOPE_HOST : RT_SCOPE_UNIVERSE;
}

} // namespace

Installer::Installer(const AgentView& view, const KernelPlaces& places, Orb::Ptr<Orb::Clock> clock,
                     const Options& options, Report report)
    : view_(view), places_(places), clock_(std::move(clock)), options_(options),
      report_(std::move(report)),
      contributors_(view.root.intfBacklogByVrf(),
                    [this](const RouteKey& key) { routeChanged(key); }) {}

// --- Routes.

void Installer::routeChanged(const RouteKey& key) {
    const RouteUse use = useOf(view_, key);
    const auto known = routes_.find(key);
    if (known == routes_.end() ? use.kind == RouteUse::Kind::none : known->second.use == use) {
        return;
    }
    if (use.kind == RouteUse::Kind::none) {
        aim(known->second, {});
        routes_.erase(known);
    } else {
        Tracked& tracked = routes_[key];
        tracked.use = use;
        retarget(key, tracked);
    }
    lookAtLeaks(key);
}

/// Whether a leaked address is a virtual one depends on its source.
void Installer::lookAtLeaks(const RouteKey& source) {
    if (source.prefix().af() != AddressFamily::ipv4) {
        return; // there it does not matter
    }
    for (const auto& vrf : known_) {
        const auto id = view_.inputs.vrfs().nameToIdMapWrapper()->nameToIdMap()->vrfId(vrf.first);
        if (id != source.vrfId()) {
            const RouteKey key(id, source.prefix());
            const auto leaked = routes_.find(key);
            if (leaked != routes_.end() && leaked->second.use.kind == RouteUse::Kind::leaked) {
                leaked->second.use = useOf(view_, key);
                retarget(key, leaked->second);
            }
        }
    }
}

void Installer::retarget(const RouteKey& key, Tracked& tracked) {
    aim(tracked, targetOf(key, tracked.use));
}

void Installer::aim(Tracked& tracked, Target target) {
    if (tracked.target == target) {
        return;
    }
    const Target old = std::exchange(tracked.target, std::move(target));
    const Target& now = tracked.target;
    const bool hasMoved = old.installer != now.installer || !(old.slot == now.slot);
    if (old.installer != nullptr) {
        if (hasMoved) {
            old.installer->unwant(old.slot);
        }
        if (old.proxy) {
            old.installer->unwant(*old.proxy);
        }
    }
    if (now.installer != nullptr) {
        now.installer->want(now.slot, now.want);
        if (now.proxy) {
            now.installer->want(*now.proxy, {now.want.vrf, now.want.link, now.want.linkTable});
        }
    }
}

// --- Where a route is to be.

Installer::Target Installer::targetOf(const RouteKey& key, const RouteUse& use) {
    const L3::VrfName* vrf = view_.inputs.vrfs().name(key.vrfId());
    if (vrf == nullptr || use.kind == RouteUse::Kind::none) {
        return {};
    }
    const auto& place = placeOf(*vrf);
    if (!place) {
        return {};
    }
    return use.kind == RouteUse::Kind::leaked ? targetOfLeaked(key, use, *vrf, *place)
                                              : targetOfVirtual(key, use, *vrf, *place);
}

Installer::Target Installer::targetOfVirtual(const RouteKey& key, const RouteUse& use,
                                             const L3::VrfName& vrf, const VrfPlace& place) {
    const bool isIpv4 = key.prefix().af() == AddressFamily::ipv4;
    if (isIpv4 && place.isDevice()) {
        return {.obstacle = cannotAnswer};
    }
    Target target{.installer = installerOf(place.netns)};
    if (use.kind == RouteUse::Kind::virtualSubnet) {
        target.slot = {key.prefix(), RT_TABLE_MAIN, {}};
        target.want = {vrf, use.interface, 0, RTN_UNICAST, RT_SCOPE_LINK};
        return target;
    }
    target.slot = {key.prefix(), place.isDevice() ? place.table : RT_TABLE_LOCAL, {}};
    target.want = {vrf, use.interface, place.table, RTN_LOCAL, localScope(key.prefix().af())};
    if (!isIpv4) {
        target.proxy = KernelSlot{key.prefix(), place.table, use.interface};
    }
    return target;
}

// Into the namespace's own VRF a route goes into table main: table local is looked at for packets
// of every VRF first.
Installer::Target Installer::targetOfLeaked(const RouteKey& key, const RouteUse& use,
                                            const L3::VrfName& vrf, const VrfPlace& place) {
    if (!use.source) {
        return {};
    }
    const auto source = placeOf(use.source);
    if (!source) {
        return {};
    }
    if (source->netns != place.netns) {
        return {.obstacle = apart};
    }
    const bool isIpv4 = key.prefix().af() == AddressFamily::ipv4;
    if (isIpv4 && source->isDevice() && use.isVirtualInSource) {
        return {.obstacle = cannotAnswer};
    }
    const bool throughDevice = !isIpv4 && place.isDevice();
    return {.installer = installerOf(place.netns),
            .slot = {key.prefix(), place.isDevice() ? place.table : RT_TABLE_MAIN, {}},
            .want = {vrf, throughDevice ? place.device : use.interface,
                     throughDevice ? place.table : source->table, RTN_LOCAL,
                     localScope(key.prefix().af())}};
}

const std::optional<VrfPlace>& Installer::placeOf(const L3::VrfName& vrf) {
    const auto known = known_.find(vrf);
    return known != known_.end() ? known->second
                                 : known_.emplace(vrf, places_.place(vrf)).first->second;
}

NamespaceInstaller* Installer::installerOf(const Lanx::NamespaceName& netns) const {
    const auto found = namespaces_.find(netns);
    return found == namespaces_.end() ? nullptr : found->second.installer.get();
}

// --- Namespaces.

void Installer::onNamespace(const Lanx::NamespaceName& netns) {
    onNamespaceGone(netns);
    NamespaceInstaller::Options options{
        .netns = std::nullopt,
        .protocol = options_.protocol,
        .clock = clock_,
        .report = report_,
        .isReleased = [this, netns](const KernelEntry& entry) { return isReleased(netns, entry); }};
    if (netns != Lanx::NamespaceName::defaultNamespace()) {
        options.netns = netns.value();
    }
    namespaces_[netns].installer = std::make_unique<NamespaceInstaller>(std::move(options));
    known_.clear();
    for (auto& [key, tracked] : routes_) {
        retarget(key, tracked);
    }
}

void Installer::onVrfs(const Lanx::NamespaceName&) { lookAtPlaces(); }

void Installer::onNamespaceGone(const Lanx::NamespaceName& netns) {
    const auto gone = namespaces_.extract(netns);
    if (!gone) {
        return;
    }
    for (auto& route : routes_) {
        if (route.second.target.installer == gone.mapped().installer.get()) {
            route.second.target = {};
        }
    }
}

/// Aims all routes anew if a VRF is elsewhere.
void Installer::lookAtPlaces() {
    bool hasChanged = false;
    for (auto& [vrf, place] : known_) {
        auto now = places_.place(vrf);
        hasChanged = hasChanged || now != place;
        place = std::move(now);
    }
    if (hasChanged) {
        for (auto& [key, tracked] : routes_) {
            retarget(key, tracked);
        }
    }
}

// --- What an earlier run left.

bool Installer::isReady(const L3::VrfName& vrf, AddressFamily af) const {
    const auto* container = view_.root.containerSm(vrf);
    return container != nullptr
           && (af == AddressFamily::ipv4 ? container->vrfReadyStatus()->v4DirectNetsReady()
                                         : container->vrfReadyStatus()->v6DirectNetsReady());
}

/// What is in the tables of a VRF may go once that is ready, all else once all are.
bool Installer::isReleased(const Lanx::NamespaceName& netns, const KernelEntry& entry) const {
    const bool isOwnTable = entry.table == RT_TABLE_MAIN || entry.table == RT_TABLE_LOCAL;
    const auto vrfs = places_.vrfsOf(netns);
    const AddressFamily af = entry.prefix.af();
    for (const L3::VrfName& vrf : vrfs) {
        const auto place = places_.place(vrf);
        if (place && !entry.isProxy
            && (place->isDevice() ? place->table == entry.table : isOwnTable)) {
            return isReady(vrf, af);
        }
    }
    return !vrfs.empty()
           && std::ranges::all_of(vrfs, [&](const L3::VrfName& vrf) { return isReady(vrf, af); });
}

std::string Installer::readyOf(const Lanx::NamespaceName& netns) const {
    std::string text;
    for (const L3::VrfName& vrf : places_.vrfsOf(netns)) {
        text += vrf.value() + (isReady(vrf, AddressFamily::ipv4) ? "+" : "-")
                + (isReady(vrf, AddressFamily::ipv6) ? "+ " : "- ");
    }
    return text;
}

void Installer::turn() {
    for (auto& [netns, known] : namespaces_) {
        if (!known.installer->hasLeftovers()) {
            continue;
        }
        std::string ready = readyOf(netns);
        if (ready != known.ready) {
            known.ready = std::move(ready);
            known.installer->reviewLeftovers();
        }
    }
}

void Installer::finish() {
    if (options_.keep) {
        return;
    }
    const double deadline = clock_->now() + longestFinish;
    for (auto& [netns, known] : namespaces_) {
        if (const std::size_t left = known.installer->removeAll(deadline); left > 0) {
            report_(std::to_string(left) + " routes and proxy neighbours are left in the kernel");
        }
    }
}

// --- What is said of a route.

std::optional<std::string> Installer::words(const RouteKey& route) const {
    const auto found = routes_.find(route);
    if (found == routes_.end()) {
        return std::nullopt;
    }
    const Target& target = found->second.target;
    if (!target.obstacle.empty()) {
        return "not installable: " + std::string(target.obstacle);
    }
    if (target.installer == nullptr) {
        return "waiting";
    }
    std::string text = target.installer->state(target.slot);
    return target.proxy && text == "installed" ? target.installer->state(*target.proxy) : text;
}

} // namespace Agent
