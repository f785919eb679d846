#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/lanx/Print.h"
#include "platform/orb/value/Hash.h"

namespace Lanx {

/// The name of an interface, in four bytes: the number of an interned record that is made on first
/// use of the name and stays for the life of the process. Equal names share a record, so equality
/// compares the number; the hash depends on the name only. Ordered bytewise by name. The default is
/// the empty name.
///
/// One agent thread, no locks: names are interned on that thread only.
class IntfId {
  public:
    /// What the tables that other processes read have room for.
    static constexpr std::size_t maxLength = 60;

    constexpr IntfId() = default;
    explicit IntfId(std::string_view name);

    /// The id of that name if there has been one, else the empty one. Makes no record, whatever is
    /// asked for.
    static IntfId known(std::string_view name);

    /// Valid for the life of the process.
    std::string_view name() const { return !*this ? std::string_view() : record().name; }

    /// True for the empty name.
    bool operator!() const { return number_ == 0; }

    std::uint64_t hash(std::uint64_t seed) const {
        return Orb::hashOf(!*this ? 0 : record().hash, seed);
    }

    void appendTo(std::string& out) const { out += name(); }
    /// Throws RangeError for a name of more than maxLength bytes.
    static IntfId fromString(std::string_view text);

    friend bool operator==(IntfId left, IntfId right) { return left.number_ == right.number_; }
    friend std::strong_ordering operator<=>(IntfId left, IntfId right) {
        return left == right ? std::strong_ordering::equal : left.name() <=> right.name();
    }

  private:
    struct Record {
        std::string name;
        std::uint64_t hash;
    };
    class Table;

    static constexpr std::uint32_t recordsPerPage = 256;
    static constexpr std::uint32_t maxPages = 1U << 16;

    const Record& record() const {
        return pages_[number_ / recordsPerPage][number_ % recordsPerPage];
    }

    // Records by number, in pages that never move. Number 0 is that of the empty name.
    static std::array<Record*, maxPages> pages_;

    std::uint32_t number_ = 0;
};

// There may be millions of those who hold one.
static_assert(sizeof(IntfId) == 4);

} // namespace Lanx
