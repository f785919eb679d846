#pragma once

#include "agent/linux/AddressMessage.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>

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

    bool isEmpty() const { return holders_.empty(); }
    /// The address of the first primary.
    std::optional<Address> primary() const;
    /// Whether the link has `own` and it is not its primary address.
    bool isSecondary(const Address& own) const;

    /// Calls `visit` with every address the link has, in no particular order.
    template <class Visit>
    void forEach(Visit&& visit) const {
        for (const auto& holder : holders_) {
            visit(holder.first);
        }
    }

  private:
    /// What the kernel tells a link's addresses apart by.
    struct Key {
        Address local;
        Address remote;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const noexcept;
    };
    /// Where a primary stands among primaries: widening scope, then age.
    struct Rank {
        int breadth;
        std::uint64_t age;
        auto operator<=>(const Rank&) const = default;
    };
    struct Entry {
        bool secondary;
        std::uint8_t scope;
        Rank rank;
    };
    template <typename T>
    using Counts = std::unordered_map<T, std::size_t, Orb::HashFunction<T>>;

    void insert(const Ipv4AddressMessage& message, int breadth);
    template <typename T>
    static void release(Counts<T>& counts, const T& counted);

    std::unordered_map<Key, Entry, KeyHash> entries_;
    std::map<Rank, Address> primaries_;
    /// Own address -> entries that count as it.
    Counts<Address> holders_;
    /// Subnet -> secondaries in it.
    Counts<Lanx::IpPrefix> secondariesIn_;
    std::uint64_t age_ = 0;
    /// A listing's primaries did not stand by scope: no place can be told from a message.
    bool irregular_ = false;
};

} // namespace Agent::Linux
