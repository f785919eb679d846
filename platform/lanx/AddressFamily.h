#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include "platform/orb/value/Text.h"

namespace Lanx {

/// Which protocol an address belongs to. The numbers are those of the socket interface here, and
/// they are an order: IPv4 comes before IPv6.
enum class AddressFamily : std::uint8_t { unset = 0, ipv4 = 2, ipv6 = 10 };

/// The bits of an address of the family: 32 or 128; 0 when unset.
constexpr unsigned addressBits(AddressFamily af) {
    return af == AddressFamily::ipv4 ? 32 : af == AddressFamily::ipv6 ? 128 : 0;
}

/// "ipv4", "ipv6" or "unset".
constexpr std::string_view familyName(AddressFamily af) {
    return af == AddressFamily::ipv4 ? "ipv4" : af == AddressFamily::ipv6 ? "ipv6" : "unset";
}

inline std::ostream& operator<<(std::ostream& out, AddressFamily af) {
    return out << familyName(af);
}

} // namespace Lanx

template <>
struct Orb::TextForm<Lanx::AddressFamily> {
    static void write(std::string& out, Lanx::AddressFamily af) { out += Lanx::familyName(af); }

    static Lanx::AddressFamily read(TextReader& in) {
        using enum Lanx::AddressFamily;
        for (const Lanx::AddressFamily af : {unset, ipv4, ipv6}) {
            if (in.tryLiteral(Lanx::familyName(af))) {
                return af;
            }
        }
        in.fail("address family");
    }
};
