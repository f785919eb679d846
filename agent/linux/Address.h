#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/socket.h>

namespace Agent::Linux {

/// An IPv4 or IPv6 address with a prefix length, host bits kept. `bytes` holds the address in
/// network order; the twelve bytes an IPv4 address does not need are zero.
struct Address {
    std::array<std::uint8_t, 16> bytes{};
    std::uint8_t family = AF_INET;
    std::uint8_t length = 0;

    /// 4 or 16.
    std::size_t size() const { return family == AF_INET ? 4 : 16; }
    /// The length of a host prefix, 32 or 128.
    std::uint8_t hostLength() const { return family == AF_INET ? 32 : 128; }
    /// The same address as a host prefix.
    Address host() const;
    /// The same prefix with the host bits cleared.
    Address subnet() const;
    bool isUnspecified() const { return bytes == decltype(bytes){}; }
    /// "10.0.0.1/24", "fe80::1/64".
    std::string text() const;

    friend auto operator<=>(const Address&, const Address&) = default;
};

struct AddressHash {
    std::size_t operator()(const Address& address) const noexcept;
};

} // namespace Agent::Linux
