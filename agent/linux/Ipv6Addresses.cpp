#include "agent/linux/Ipv6Addresses.h"

namespace Agent::Linux {

void Ipv6Addresses::add(const Ipv6AddressMessage& message) {
    remove(message);
    const Entry entry = documentEntry(message);
    if (entry.isGiven()) {
        owns_.emplace(message.local.addr(), message.own());
        entries_.emplace(message.own(), entry);
    } else {
        unused_.emplace(message.local.addr(), Unused{message.own(), obstacleTo(message)});
    }
}

void Ipv6Addresses::remove(const Ipv6AddressMessage& message) {
    unused_.erase(message.local.addr());
    auto known = owns_.find(message.local.addr());
    if (known != owns_.end()) {
        entries_.erase(known->second);
        owns_.erase(known);
    }
}

std::optional<Lanx::Ip6AddrWithMask> Ipv6Addresses::ownOf(const Lanx::Ip6Addr& local) const {
    auto known = owns_.find(local);
    return known == owns_.end() ? std::nullopt : std::optional(known->second);
}

Ipv6Addresses::Entry Ipv6Addresses::entry(const Address& own) const {
    const auto known = entries_.find(own);
    return known == entries_.end() ? Entry() : known->second;
}

} // namespace Agent::Linux
