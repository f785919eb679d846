#include "agent/linux/Ipv4Addresses.h"

#include <algorithm>
#include <limits>

namespace Agent::Linux {

namespace {

std::uint8_t breadthOf(const Ipv4AddressMessage& message) {
    return static_cast<std::uint8_t>(std::numeric_limits<std::uint8_t>::max() - message.scope);
}

} // namespace

void Ipv4Addresses::append(const Ipv4AddressMessage& message) {
    // A listing that was disturbed may show an address twice; its first place counts.
    if (entries_.contains({message.local, message.remote})) {
        return;
    }
    std::uint8_t breadth = breadthOf(message);
    if (!message.isSecondary() && !primaries_.empty()) {
        const std::uint8_t last = primaries_.rbegin()->first;
        irregular_ = irregular_ || breadth < last;
        breadth = std::max(breadth, last);
    }
    insert(message, breadth);
}

bool Ipv4Addresses::add(const Ipv4AddressMessage& message) {
    if (const Entry* known = entries_.find({message.local, message.remote})) {
        return known->secondary == message.isSecondary() && known->scope == message.scope;
    }
    if (irregular_ && !message.isSecondary()) {
        return false;
    }
    insert(message, breadthOf(message));
    return true;
}

bool Ipv4Addresses::remove(const Ipv4AddressMessage& message) {
    const Key key{message.local, message.remote};
    const Entry* known = entries_.find(key);
    if (known == nullptr) {
        return false;
    }
    const Lanx::IpPrefix subnet = message.remote.subnet();
    if (known->secondary) {
        release(secondariesIn_, subnet);
    } else if (secondariesIn_.contains(subnet)) {
        return false;
    } else {
        removePrimary(*known);
    }
    if (key.hasPeer()) {
        release(withPeer_, key.own());
    }
    entries_.erase(key);
    return true;
}

void Ipv4Addresses::removePrimary(const Entry& entry) {
    const auto queue = primaries_.find(entry.breadth);
    queue->second.remove(entry.age);
    if (queue->second.empty()) {
        primaries_.erase(queue);
    }
}

std::optional<Lanx::IpAddrWithMask> Ipv4Addresses::primary() const {
    if (primaries_.empty()) {
        return std::nullopt;
    }
    return primaries_.begin()->second.front();
}

bool Ipv4Addresses::isSecondary(const Address& own) const {
    return (entries_.contains({own, own}) || withPeer_.contains(own)) && primary() != own;
}

void Ipv4Addresses::insert(const Ipv4AddressMessage& message, std::uint8_t breadth) {
    const Key key{message.local, message.remote};
    const Entry entry{age_++, breadth, message.scope, message.isSecondary()};
    entries_.tryInsert(key, entry);
    if (key.hasPeer()) {
        ++*withPeer_.tryInsert(key.own()).first;
    }
    if (entry.secondary) {
        ++*secondariesIn_.tryInsert(message.remote.subnet()).first;
    } else {
        primaries_[breadth].append(entry.age, key.own());
    }
}

template <typename T>
void Ipv4Addresses::release(Counts<T>& counts, const T& counted) {
    if (--*counts.find(counted) == 0) {
        counts.erase(counted);
    }
}

} // namespace Agent::Linux
