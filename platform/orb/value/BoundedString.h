#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "platform/orb/value/Error.h"
#include "platform/orb/value/Hash.h"
#include "platform/orb/value/Text.h"

namespace Orb {

/// A byte string of at most `limit` bytes, the base of name types. Ordered bytewise; prints as it
/// is. `Tag` is the class that derives from it and has a static `rangeError`, the text of the
/// RangeError that a longer string is refused with.
template <typename Tag, std::size_t limit>
class BoundedString {
  public:
    static constexpr std::size_t maxLength = limit;

    BoundedString() = default;
    BoundedString(std::string value) : value_(std::move(value)) {
        if (value_.size() > maxLength) {
            throw RangeError(Tag::rangeError);
        }
    }
    BoundedString(std::string_view value) : BoundedString(std::string(value)) {}
    BoundedString(const char* value) : BoundedString(std::string(value)) {}

    const std::string& value() const { return value_; }

    /// True for the empty string.
    bool operator!() const { return value_.empty(); }

    std::uint64_t hash(std::uint64_t seed) const { return hashOf(value_, seed); }

    void appendTo(std::string& out) const { out += value_; }
    static Tag fromString(std::string_view text) { return Tag(text); }

    friend bool operator==(const BoundedString&, const BoundedString&) = default;
    friend std::strong_ordering operator<=>(const BoundedString&, const BoundedString&) = default;
    friend std::ostream& operator<<(std::ostream& out, const BoundedString& string) {
        return out << string.value_;
    }

  private:
    std::string value_;
};

} // namespace Orb
