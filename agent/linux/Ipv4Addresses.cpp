#include "agent/linux/Ipv4Addresses.h"

#include <algorithm>
#include <limits>

namespace Agent::Linux {

namespace {

int breadthOf(const AddressMessage& message) {
    return std::numeric_limits<std::uint8_t>::max() - message.scope;
}

} // namespace

std::size_t Ipv4Addresses::KeyHash::operator()(const Key& key) const noexcept {
    AddressHash hash;
    return hash(key.local) * 31 + hash(key.remote);
}

void Ipv4Addresses::append(const AddressMessage& message) {
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

bool Ipv4Addresses::add(const AddressMessage& message) {
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

bool Ipv4Addresses::remove(const AddressMessage& message) {
    auto known = entries_.find({message.local, message.remote});
    if (known == entries_.end()) {
        return false;
    }
    Address subnet = message.remote.subnet();
    if (known->second.secondary) {
        release(secondariesIn_, subnet);
    } else if (secondariesIn_.contains(subnet)) {
        return false;
    } else {
        primaries_.erase(known->second.place);
    }
    release(holders_, message.own());
    entries_.erase(known);
    return true;
}

std::optional<Address> Ipv4Addresses::primary() const {
    if (primaries_.empty()) {
        return std::nullopt;
    }
    return primaries_.begin()->second;
}

bool Ipv4Addresses::isSecondary(const Address& own) const {
    return holders_.contains(own) && primary() != own;
}

void Ipv4Addresses::insert(const AddressMessage& message, int breadth) {
    Place place{breadth, age_++};
    entries_.emplace(Key{message.local, message.remote},
                     Entry{message.isSecondary(), message.scope, place});
    ++holders_[message.own()];
    if (message.isSecondary()) {
        ++secondariesIn_[message.remote.subnet()];
    } else {
        primaries_.emplace(place, message.own());
    }
}

void Ipv4Addresses::release(Counts& counts, const Address& address) {
    auto count = counts.find(address);
    if (--count->second == 0) {
        counts.erase(count);
    }
}

} // namespace Agent::Linux
