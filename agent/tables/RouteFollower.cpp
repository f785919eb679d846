#include "agent/tables/RouteFollower.h"

#include "agent/tables/TableRows.h"

namespace Agent {

void RouteFollower::update() {
    try {
        tables_.update([this](const directnet_change& change) {
            if (change.kind == DIRECTNET_VRF && change.after != nullptr) {
                handleVrf(change.after->vrf);
            } else if (change.kind == DIRECTNET_ROUTE) {
                handleRoute(change.before == nullptr ? nullptr : &change.before->route,
                            change.after == nullptr ? nullptr : &change.after->route);
            }
        });
    } catch (const directnet::TablesError&) {
        finish();
        throw;
    }
    finish();
}

// All VRFs that come are told before the routes.
void RouteFollower::handleVrf(const directnet_vrf& vrf) {
    const auto found = names_.find(vrf.id);
    if (found != names_.end() && found->second == vrf.name) {
        return;
    }
    const bool hadRoutes = found != names_.end() || nameless_.erase(vrf.id) > 0;
    const std::string before = found == names_.end() ? "" : found->second;
    bool wasElsewhere = false;
    for (auto other = names_.begin(); other != names_.end();) {
        if (other->second == vrf.name) {
            renamed_.try_emplace(other->first, Renamed{other->second});
            nameless_.insert(other->first);
            other = names_.erase(other);
            wasElsewhere = true;
        } else {
            ++other;
        }
    }
    if (hadRoutes || wasElsewhere) {
        renamed_.try_emplace(vrf.id, Renamed{before});
    }
    names_[vrf.id] = vrf.name;
}

void RouteFollower::handleRoute(const directnet_route* before, const directnet_route* after) {
    const directnet_route& route = after == nullptr ? *before : *after;
    if (const auto renamed = renamed_.find(route.vrf_id); renamed != renamed_.end()) {
        const Lanx::IpGenPrefix prefix = prefixOf(route.prefix);
        if (before != nullptr) {
            tellGone(renamed->second.before, prefix);
        }
        renamed->second.changed.insert(prefix);
        return;
    }
    const auto name = names_.find(route.vrf_id);
    if (name == names_.end()) {
        nameless_.insert(route.vrf_id);
    } else if (after == nullptr) {
        tellGone(name->second, prefixOf(before->prefix));
    } else if (before != nullptr) {
        tell(ChangeKind::changes, name->second, *after);
    } else {
        tell(isFirst_ ? ChangeKind::is : ChangeKind::comes, name->second, *after);
    }
}

/// What a name has had goes before it has anything new.
void RouteFollower::finish() {
    for (const auto& [id, renamed] : renamed_) {
        tables_.eachRoute(
            [&, &before = renamed](const directnet_route& route) {
                const Lanx::IpGenPrefix prefix = prefixOf(route.prefix);
                if (!before.changed.contains(prefix)) {
                    tellGone(before.before, prefix);
                }
            },
            id);
    }
    for (const auto& [id, renamed] : renamed_) {
        const auto name = names_.find(id);
        if (name != names_.end()) {
            tables_.eachRoute(
                [&](const directnet_route& route) { tell(ChangeKind::comes, name->second, route); },
                id);
        }
    }
    renamed_.clear();
    time_.reset();
    isFirst_ = false;
}

void RouteFollower::tellGone(const std::string& vrf, const Lanx::IpGenPrefix& prefix) {
    if (!vrf.empty()) {
        ChangeRow row{time(), ChangeKind::goes, vrf, {}};
        row.route.prefix = prefix;
        listener_(row);
    }
}

void RouteFollower::tell(ChangeKind kind, const std::string& vrf, const directnet_route& route) {
    const auto at = kind == ChangeKind::is ? std::nullopt : std::optional(time());
    listener_({at, kind, vrf, routeRow(tables_, route)});
}

ClockTime RouteFollower::time() {
    if (!time_) {
        time_ = clockTime(tables_);
    }
    return *time_;
}

} // namespace Agent
