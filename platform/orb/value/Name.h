#pragma once

#include <compare>
#include <ostream>
#include <string>
#include <utility>

namespace Orb {

using String = std::string;

/// Formats like printf into a string.
[[gnu::format(printf, 1, 2)]] String format(const char* format, ...);

/// The name of an entity within its directory.
class Name {
  public:
    Name() = default;
    explicit Name(String value) : value_(std::move(value)) {}

    const String& value() const { return value_; }
    std::uint64_t hash(std::uint64_t seed) const;

    friend auto operator<=>(const Name&, const Name&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Name& name) {
        return out << name.value_;
    }

  private:
    String value_;
};

} // namespace Orb
