#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/lanx/Print.h"
#include "platform/orb/value/Hash.h"

namespace Lanx {

/// The name of an interface, in one word: the address of an interned record that is made on first
/// use of the name and stays for the life of the process. Equal names share a record, so equality
/// compares the word; the hash depends on the name only. Ordered bytewise by name. The default is
/// the empty name.
///
/// One agent thread, no locks: names are interned on that thread only.
class IntfId {
  public:
    /// What the tables that other processes read have room for.
    static constexpr std::size_t maxLength = 60;

    constexpr IntfId() = default;
    explicit IntfId(std::string_view name);

    /// Valid for the life of the process.
    std::string_view name() const { return record_ ? record_->name : std::string_view(); }

    /// True for the empty name.
    bool operator!() const { return !record_; }

    std::uint64_t hash(std::uint64_t seed) const {
        return Orb::hashOf(record_ ? record_->hash : 0, seed);
    }

    void appendTo(std::string& out) const { out += name(); }
    /// Throws RangeError for a name of more than maxLength bytes.
    static IntfId fromString(std::string_view text);

    friend bool operator==(IntfId left, IntfId right) { return left.record_ == right.record_; }
    friend std::strong_ordering operator<=>(IntfId left, IntfId right) {
        return left == right ? std::strong_ordering::equal : left.name() <=> right.name();
    }

  private:
    struct Record {
        std::string name;
        std::uint64_t hash;
    };
    class Table;

    const Record* record_ = nullptr;
};

} // namespace Lanx
