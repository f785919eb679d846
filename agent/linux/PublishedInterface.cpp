#include "agent/linux/PublishedInterface.h"

namespace Agent::Linux {

namespace {

using json = nlohmann::json;

/// Makes `set` hold `address` or not, and writes the difference into `patch`.
void bring(std::unordered_set<Address, AddressHash>& set, const Address& address, bool held,
           json& patch) {
    if (held ? set.insert(address).second : set.erase(address) != 0) {
        patch[address.text()] = held ? json(true) : json(nullptr);
    }
}

} // namespace

PublishedInterface::Patches PublishedInterface::publish(const std::string& name,
                                                        const LinkModel* model, Changes changes) {
    if (changes.whole) {
        changes.addresses.assign(secondaries_.begin(), secondaries_.end());
        changes.addresses.insert(changes.addresses.end(), ipv6_.begin(), ipv6_.end());
        if (model) {
            auto note = [&](const Address& address) { changes.addresses.push_back(address); };
            model->ipv4.forEach(note);
            model->ipv6.forEach(note);
        }
    }
    Patches patches;
    patches.kernel = publishKernel(name, model);
    patches.ipv6 = publishIpv6(model, changes.addresses);
    patches.ipv4 = publishIpv4(model, std::move(changes.addresses));
    return patches;
}

std::optional<json> PublishedInterface::publishKernel(const std::string& name,
                                                      const LinkModel* model) {
    std::optional<bool> running;
    if (model) {
        running = model->link.isRunning();
    }
    if (running == running_) {
        return std::nullopt;
    }
    json patch;
    if (running) {
        patch["running"] = *running;
        if (!running_) {
            patch["device"] = name;
        }
    }
    running_ = running;
    return patch;
}

std::optional<json> PublishedInterface::publishIpv4(const LinkModel* model,
                                                    std::vector<Address> changed) {
    bool hadSecondaries = !secondaries_.empty();
    bool had = primary_ || hadSecondaries;
    if (!model || model->ipv4.isEmpty()) {
        primary_.reset();
        secondaries_.clear();
        return had ? std::optional<json>(nullptr) : std::nullopt;
    }
    json patch;
    auto primary = model->ipv4.primary();
    if (primary != primary_) {
        patch["address"] = primary ? json(primary->text()) : json(nullptr);
        // Both change roles, whether a message named them or not.
        for (const auto& role : {primary, primary_}) {
            if (role) {
                changed.push_back(*role);
            }
        }
        primary_ = primary;
    }
    json secondaries;
    for (const Address& address : changed) {
        if (address.family == AF_INET) {
            bring(secondaries_, address, model->ipv4.isSecondary(address), secondaries);
        }
    }
    if (!secondaries.empty()) {
        patch["secondary"] = secondaries_.empty() ? json(nullptr) : std::move(secondaries);
    }
    return patch.empty() ? std::nullopt : std::optional<json>(std::move(patch));
}

std::optional<json> PublishedInterface::publishIpv6(const LinkModel* model,
                                                    const std::vector<Address>& changed) {
    bool had = !ipv6_.empty();
    if (!model || model->ipv6.isEmpty()) {
        ipv6_.clear();
        return had ? std::optional<json>(nullptr) : std::nullopt;
    }
    json patch;
    for (const Address& address : changed) {
        if (address.family == AF_INET6) {
            bring(ipv6_, address, model->ipv6.contains(address), patch);
        }
    }
    return patch.empty() ? std::nullopt : std::optional<json>(std::move(patch));
}

} // namespace Agent::Linux
