#include "agent/linux/Ipv4Addresses.h"

#include <algorithm>
#include <limits>

namespace Agent::Linux {

namespace {

int breadthOf(const Ipv4AddressMessage& message) {
    return std::numeric_limits<std::uint8_t>::max() - message.scope;
}

} // namespace

std::size_t Ipv4Addresses::KeyHash::operator()(const Key& key) const noexcept {
    return Orb::hashOf(key.remote, Orb::hashOf(key.local));
}

void Ipv4Addresses::append(const Ipv4AddressMessage& message) {
    // A listing that was disturbed may show an address twice; its first place counts.
    if (entries_.contains({message.local, message.remote})) {
        return;
    }
    int breadth = breadthOf(message);
    if (!message.isSecondary() && !primaries_.empty()) {
        int last = primaries_.rbegin()->first.breadth;
        irregular_ = irregular_ || breadth < last;
        breadth = std::max(breadth, last);
    }
    insert(message, breadth);
}

bool Ipv4Addresses::add(const Ipv4AddressMessage& message) {
    auto known = entries_.find({message.local, message.remote});
    if (known != entries_.end()) {
        return known->second.secondary == message.isSecondary()
               && known->second.scope == message.scope;
    }
    if (irregular_ && !message.isSecondary()) {
        return false;
    }
    insert(message, breadthOf(message));
    return true;
}

bool Ipv4Addresses::remove(const Ipv4AddressMessage& message) {
    auto known = entries_.find({message.local, message.remote});
    if (known == entries_.end()) {
        return false;
    }
    const Lanx::IpPrefix subnet = message.remote.subnet();
    if (known->second.secondary) {
        release(secondariesIn_, subnet);
    } else if (secondariesIn_.contains(subnet)) {
        return false;
    } else {
        primaries_.erase(known->second.rank);
    }
    release(holders_, message.own());
    entries_.erase(known);
    return true;
}

std::optional<Lanx::IpAddrWithMask> Ipv4Addresses::primary() const {
    if (primaries_.empty()) {
        return std::nullopt;
    }
    return primaries_.begin()->second;
}

bool Ipv4Addresses::isSecondary(const Address& own) const {
    return holders_.contains(own) && primary() != own;
}

void Ipv4Addresses::insert(const Ipv4AddressMessage& message, int breadth) {
    Rank rank{breadth, age_++};
    entries_.emplace(Key{message.local, message.remote},
                     Entry{message.isSecondary(), message.scope, rank});
    ++holders_[message.own()];
    if (message.isSecondary()) {
        ++secondariesIn_[message.remote.subnet()];
    } else {
        primaries_.emplace(rank, message.own());
    }
}

template <typename T>
void Ipv4Addresses::release(Counts<T>& counts, const T& counted) {
    auto count = counts.find(counted);
    if (--count->second == 0) {
        counts.erase(count);
    }
}

} // namespace Agent::Linux
