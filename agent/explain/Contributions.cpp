#include "agent/explain/Contributions.h"

#include <algorithm>
#include <utility>

#include "agent/device/DeviceInputs.h"
#include "agent/topics/RouteLookup.h"
#include "directnet/root/RootSm.h"

namespace Agent {

using Lanx::AddressFamily;
using Lanx::IpGenPrefix;
using Routing::DirectNet::IntfBacklog;
using Routing::DirectNet::IntfIdAndAddr;
using Routing::DirectNet::IntfIdSet;
using Routing::Fib::RouteType;
using Vrf::VrfIdMap::VrfId;

namespace {

ContributionRow rowOf(const AgentView& view, const IntfBacklog& backlog, const IntfIdSet& set,
                      const IntfIdAndAddr& contributor, Routing::Rib::ViaSetKey viaSet) {
    const Routing::Rib::Route route({backlog.vrfId(), set.genPrefix()}, viaSet,
                                    contributor.routeType());
    ContributionRow row;
    row.prefix = set.genPrefix();
    row.type = contributor.routeType();
    row.via = RouteLookup(view).row(route).via;
    row.standing = standingOf(backlog, set, contributor);
    if (!row.standing.wins) {
        const IntfIdAndAddr& winner = set.intfIdAndAddr().first()->key();
        row.winnerIntf = winner.intfId();
        row.winnerAddress = winner.addrWithMask();
    }
    return row;
}

/// What the address contributes to one prefix; of a leaked one with the VRF that it comes from.
void appendRows(std::vector<ContributionRow>& rows, const AgentView& view,
                const IntfBacklog& backlog, const IpGenPrefix& prefix, const IntfAddress& address,
                VrfId source) {
    const IntfIdSet* const set = backlog.intfIdsByPrefix(prefix);
    if (set == nullptr) {
        return;
    }
    const auto& all = set->intfIdAndAddr();
    const IntfIdAndAddr begin(address.intf, address.address, source, address.isVirtual,
                              RouteType::unset);
    for (const auto* entry = all.atOrAfter(begin); entry != nullptr;
         entry = all.after(entry->key())) {
        const IntfIdAndAddr& key = entry->key();
        if (IntfIdAndAddr(key.intfId(), key.addrWithMask(), key.sourceVrfId(), key.isVirtual(),
                          RouteType::unset)
            != begin) {
            break;
        }
        rows.push_back(rowOf(view, backlog, *set, key, entry->value()));
    }
}

void appendLeaked(std::vector<ContributionRow>& rows, const AgentView& view,
                  const IntfBacklog& backlog, IntfAddress address) {
    const Lanx::IpGenAddrWithMask own = address.address;
    const auto& status = own.af() == AddressFamily::ipv4 ? view.root.ipv4CrLeakLocalStatus()
                                                         : view.root.ipv6CrLeakLocalStatus();
    const auto* leaks = status->leakedRouteBySourceVrf(backlog.vrfId());
    const auto* destinations = leaks == nullptr ? nullptr : leaks->destVrfId().find(own.subnet());
    if (destinations == nullptr) {
        return;
    }
    address.isVirtual = false; // leaked routes do not tell
    for (const auto& destination : *destinations) {
        const auto* dest = view.root.intfBacklogByVrf()->intfBacklog(destination.key());
        if (dest != nullptr) {
            const std::size_t before = rows.size();
            appendRows(rows, view, *dest, own.hostPrefix(), address, backlog.vrfId());
            std::for_each(rows.begin() + static_cast<std::ptrdiff_t>(before), rows.end(),
                          [&](ContributionRow& row) { row.vrf = dest->vrfName().value(); });
        }
    }
}

} // namespace

std::set<IpGenPrefix> prefixesAround(const Lanx::IpGenAddrWithMask& address) {
    std::set<IpGenPrefix> prefixes{address.subnet(), address.hostPrefix()};
    if (address.af() == AddressFamily::ipv4) {
        const Lanx::IpAddrWithMask ipv4(address.addr().v4(), address.len());
        prefixes.insert(IpGenPrefix::host(ipv4.networkAddr()));
        prefixes.insert(IpGenPrefix::host(ipv4.broadcastAddr()));
    }
    return prefixes;
}

std::vector<ContributionRow> contributionsOf(const AgentView& view, const L3::VrfName& vrf,
                                             const IntfAddress& address) {
    std::vector<ContributionRow> rows;
    const auto* container = view.root.containerSm(vrf);
    if (container == nullptr) {
        return rows;
    }
    const IntfBacklog& backlog = *container->intfBacklog();
    for (const IpGenPrefix& prefix : prefixesAround(address.address)) {
        appendRows(rows, view, backlog, prefix, address, VrfId::invalid());
    }
    const bool hasSubnet = std::ranges::any_of(
        rows, [](const ContributionRow& row) { return row.type == RouteType::connected; });
    if (hasSubnet) {
        appendLeaked(rows, view, backlog, address);
    }
    return rows;
}

} // namespace Agent
