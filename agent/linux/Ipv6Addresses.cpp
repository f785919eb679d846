#include "agent/linux/Ipv6Addresses.h"

#include <utility>

namespace Agent::Linux {

void Ipv6Addresses::add(const Ipv6AddressMessage& message) {
    remove(message);
    const auto len = static_cast<std::uint8_t>(message.own().len());
    if (Entry entry = documentEntry(message); entry.isGiven()) {
        entries_.tryInsert(message.local.addr(), {len, std::move(entry)});
    } else {
        unused_.tryInsert(message.local.addr(), {len, obstacleTo(message)});
    }
}

void Ipv6Addresses::remove(const Ipv6AddressMessage& message) {
    entries_.erase(message.local.addr());
    unused_.erase(message.local.addr());
}

std::optional<Lanx::Ip6AddrWithMask> Ipv6Addresses::ownOf(const Lanx::Ip6Addr& local) const {
    const Counted* known = entries_.find(local);
    return known == nullptr ? std::nullopt : std::optional(Address(local, known->len));
}

Ipv6Addresses::Entry Ipv6Addresses::entry(const Address& own) const {
    const Counted* known = entries_.find(own.addr());
    return known == nullptr || known->len != own.len() ? Entry() : known->entry;
}

} // namespace Agent::Linux
