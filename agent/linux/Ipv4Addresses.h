#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>

#include "agent/linux/AddressMessage.h"
#include "agent/linux/AddressQueue.h"
#include "platform/orb/container/HashMap.h"
#include "platform/orb/value/Hash.h"

namespace Agent::Linux {

/// The IPv4 addresses of one link, in as much of the kernel's order as decides which is primary.
///
/// The kernel keeps the addresses of a link in a list. A new address in a subnet that the link
/// already has becomes a secondary at the end. Any other becomes a primary behind the last primary
/// of its own or a narrower scope, so primaries stand by falling scope and, within a scope, by age.
/// Removing a primary that has secondaries either removes them first, or promotes one of them to a
/// place that its messages do not tell. Whenever a message does not tell the whole of the new order
/// it is refused as doubtful, and only a listing helps.
///
/// The first primary is the link's primary address; every other address counts as secondary. Two
/// addresses that differ in their peers only count as one.
class Ipv4Addresses {
  public:
    using Address = Lanx::IpAddrWithMask;

    /// Takes the next address of a listing, in the listing's order.
    void append(const Ipv4AddressMessage& message);

    /// Applies an announced addition or change. False if it is doubtful; then nothing was changed.
    [[nodiscard]] bool add(const Ipv4AddressMessage& message);
    /// Applies an announced removal. False if it is doubtful; then nothing was changed.
    [[nodiscard]] bool remove(const Ipv4AddressMessage& message);

    bool isEmpty() const { return entries_.empty(); }
    /// The address of the first primary.
    std::optional<Address> primary() const;
    /// Whether the link has `own` and it is not its primary address.
    bool isSecondary(const Address& own) const;

    /// Calls `visit` with every address the link has, in no particular order; for one that it has
    /// with several peers once for each.
    template <class Visit>
    void forEach(Visit&& visit) const {
        for (const auto& [key, entry] : entries_) {
            visit(key.own());
        }
    }

  private:
    /// What the kernel tells a link's addresses apart by.
    struct Key {
        Address local;
        Address remote;

        bool hasPeer() const { return local != remote; }
        Address own() const { return ownAddress(local, remote); }
        std::uint64_t hash(std::uint64_t seed) const {
            return Orb::hashOf(remote, Orb::hashOf(local, seed));
        }
        auto operator<=>(const Key&) const = default;
    };
    struct Entry {
        std::uint64_t age;
        std::uint8_t breadth; // where it stands among primaries
        std::uint8_t scope;
        bool secondary;
    };
    template <typename T>
    using Counts = Orb::HashMap<T, std::uint32_t>;

    void insert(const Ipv4AddressMessage& message, std::uint8_t breadth);
    void removePrimary(const Entry& entry);
    template <typename T>
    static void release(Counts<T>& counts, const T& counted);

    Orb::HashMap<Key, Entry> entries_;
    /// By widening scope, then age.
    std::map<std::uint8_t, AddressQueue> primaries_;
    /// Own address -> entries with a peer that count as it.
    Counts<Address> withPeer_;
    /// Subnet -> secondaries in it.
    Counts<Lanx::IpPrefix> secondariesIn_;
    std::uint64_t age_ = 0;
    /// A listing's primaries did not stand by scope: no place can be told from a message.
    bool irregular_ = false;
};

} // namespace Agent::Linux
