#include "agent/linux/Ipv6Addresses.h"

namespace Agent::Linux {

void Ipv6Addresses::add(const AddressMessage& message) {
    remove(message);
    if (message.isActive()) {
        owns_.emplace(message.local.host(), message.own());
        active_.insert(message.own());
    }
}

void Ipv6Addresses::remove(const AddressMessage& message) {
    auto known = owns_.find(message.local.host());
    if (known != owns_.end()) {
        active_.erase(known->second);
        owns_.erase(known);
    }
}

std::optional<Address> Ipv6Addresses::ownOf(const Address& local) const {
    auto known = owns_.find(local.host());
    return known == owns_.end() ? std::nullopt : std::optional<Address>(known->second);
}

} // namespace Agent::Linux
