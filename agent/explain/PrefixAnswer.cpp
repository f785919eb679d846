#include "agent/explain/PrefixAnswer.h"

#include "agent/device/DeviceInputs.h"
#include "agent/explain/VrfObstacles.h"
#include "agent/install/RouteUse.h"
#include "agent/topics/KernelWords.h"
#include "agent/topics/RouteLookup.h"
#include "directnet/root/RootSm.h"

namespace Agent {

using Lanx::IpGenPrefix;
using Routing::DirectNet::IntfIdAndAddr;
using Routing::DirectNet::IntfIdAndPrefix;
using Routing::DirectNet::IntfIdSet;
using Vrf::VrfIdMap::VrfId;

namespace {

/// The route that a contributor stands for.
Routing::Rib::Route routeOf(const VrfCursor::ContainerSm& vrf, const IpGenPrefix& prefix,
                            const IntfIdAndAddr& contributor, Routing::Rib::ViaSetKey viaSet) {
    Routing::Rib::Route route({vrf.vrfId(), prefix}, viaSet, contributor.routeType());
    route.srcVrfIdIs(contributor.sourceVrfId());
    return route;
}

std::string kindOf(const IntfIdAndAddr& contributor) {
    if (contributor.sourceVrfId() != VrfId::invalid()) {
        return "leaked";
    }
    return contributor.isVirtual() ? "virtual" : "own";
}

/// Why the written route is not that of the first contributor.
std::string whyBehind(const VrfCursor::ContainerSm& vrf, const IpGenPrefix& prefix,
                      const IntfIdSet* contributors, bool isWritten, bool isQueued) {
    const auto& backlog = vrf.intfBacklog()->backlog();
    if (!isQueued) {
        return "the backlog was emptied without it";
    }
    if (contributors == nullptr) {
        return "nobody contributes any more: the next drain removes the route";
    }
    const IntfIdAndAddr& winner = contributors->intfIdAndAddr().first()->key();
    const bool* isFresh = backlog.find(IntfIdAndPrefix(winner.intfId(), prefix));
    if (isFresh != nullptr && !*isFresh) {
        return "the tables have no room for it";
    }
    return isWritten ? "the next drain replaces it" : "the next drain writes it";
}

} // namespace

bool PrefixAnswer::appendNext(std::string& out) {
    if (candidates_) {
        return candidates_->step(out);
    }
    if (const ContainerSm* const vrf = vrfs_.vrf()) {
        if (!found_) {
            appendPrefix(out, *vrf);
        }
        if (found_ && appendContributor(out, *vrf)) {
            return true;
        }
    }
    found_.reset();
    last_.reset();
    if (vrfs_.advance()) {
        return true;
    }
    if (!isSaid_) {
        beginCandidates(out);
    }
    return !isSaid_;
}

void PrefixAnswer::beginCandidates(std::string& out) {
    PrefixRow row;
    row.vrf.name = vrf_ ? vrf_->value() : std::string();
    row.prefix = asked_;
    row.why = whyNone();
    appendJsonLine(out, row);
    candidates_.emplace(view_, CandidateWalk::Asked{asked_, isAddress_, vrf_});
}

void PrefixAnswer::appendPrefix(std::string& out, const ContainerSm& vrf) {
    std::vector<std::string> longer;
    if (!find(vrf, longer)) {
        return;
    }
    PrefixRow row = describe(vrf);
    if (!longer.empty()) {
        row.longer = std::move(longer);
    }
    appendJsonLine(out, row);
    isSaid_ = true;
}

/// Finds the prefix to be explained; `longer` are those of the address that have contributors and
/// would be taken if their routes were written. Returns whether there is anything of it.
bool PrefixAnswer::find(const ContainerSm& vrf, std::vector<std::string>& longer) {
    std::optional<IpGenPrefix> contributed;
    for (unsigned len = asked_.len() + 1; len-- > 0;) {
        const IpGenPrefix prefix = IpGenPrefix::covering(asked_.addr(), len);
        if (!!route(vrf, prefix)) {
            found_ = prefix;
            return true;
        }
        if (vrf.intfBacklog()->intfIdsByPrefix(prefix) != nullptr) {
            longer.push_back(prefix.toString());
            contributed = contributed ? contributed : prefix;
        }
        if (!isAddress_) {
            break;
        }
    }
    longer.clear();
    found_ = contributed;
    return contributed.has_value();
}

PrefixAnswer::Route PrefixAnswer::route(const ContainerSm& vrf, const IpGenPrefix& prefix) const {
    const auto& routes = prefix.af() == Lanx::AddressFamily::ipv4
                             ? view_.root.ipv4AllVrfRouteConfig()
                             : view_.root.ipv6AllVrfRouteConfig();
    return routes->route({vrf.vrfId(), prefix});
}

PrefixRow PrefixAnswer::describe(const ContainerSm& vrf) const {
    PrefixRow row;
    row.vrf.name = vrf.vrfName().value();
    row.prefix = *found_;
    const Route written = route(vrf, *found_);
    if (!!written) {
        row.route.row = RouteLookup(view_).row(written);
        describeKernel(*row.route.row, written.key());
    }
    const auto& backlog = vrf.intfBacklog()->backlog();
    const auto isQueued = [&](Lanx::IntfId intf) {
        return backlog.contains(IntfIdAndPrefix(intf, *found_));
    };
    Route due;
    const IntfIdSet* contributors = vrf.intfBacklog()->intfIdsByPrefix(*found_);
    if (contributors != nullptr) {
        const auto& first = *contributors->intfIdAndAddr().first();
        due = routeOf(vrf, *found_, first.key(), first.value());
        row.queued = isQueued(first.key().intfId());
    }
    row.queued = row.queued || isQueued(vrf.intfBacklogSm()->installedIntfId(*found_));
    if (written != due) {
        row.why = whyBehind(vrf, *found_, contributors, !!written, row.queued);
    }
    return row;
}

/// How it stands with the route in the kernel of an agent that has one.
void PrefixAnswer::describeKernel(RouteRow& row, const Routing::Rib::RouteKey& key) const {
    if (view_.kernel != nullptr) {
        row.kernel = view_.kernel->words(key);
    }
    if (!row.kernel && view_.catalog != nullptr) {
        row.kernel = useOf(view_, key).kind == RouteUse::Kind::none
                         ? "left to it"
                         : "not installed: the agent runs without --install";
    }
}

std::optional<std::string> PrefixAnswer::whyNone() const {
    if (asked_.len() == 0) {
        return "a prefix of length 0 never becomes a connected route";
    }
    std::string why = "nobody contributes to it";
    if (!vrf_) {
        std::string down;
        for (const auto& [name, obstacle] : vrfObstacles(view_)) {
            if (!obstacle.empty()) {
                down += (down.empty() ? "" : ", ") + name.value() + " (" + obstacle + ')';
            }
        }
        why += down.empty() ? "" : "; VRFs that are not up: " + down;
    }
    return why;
}

bool PrefixAnswer::appendContributor(std::string& out, const ContainerSm& vrf) {
    const IntfIdSet* contributors = vrf.intfBacklog()->intfIdsByPrefix(*found_);
    if (contributors == nullptr) {
        return false;
    }
    const auto& all = contributors->intfIdAndAddr();
    const auto* entry = last_ ? all.after(*last_) : all.first();
    if (entry == nullptr) {
        return false;
    }
    last_ = entry->key();
    const RouteRow route = RouteLookup(view_).row(routeOf(vrf, *found_, *last_, entry->value()));
    appendJsonLine(out, ContributorRow{last_->intfId(), last_->addrWithMask(), kindOf(*last_),
                                       route.sourceVrf, last_->routeType(), route.via,
                                       standingOf(*vrf.intfBacklog(), *contributors, *last_)});
    return true;
}

} // namespace Agent
