#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenAddrWithMask.h"
#include "platform/orb/attribute/Value.h"
#include "platform/orb/value/StrongNumber.h"

namespace TestSupport {

/// Makes random values of every value type from a seed. The ranges are narrow on purpose: values
/// often share fields or are equal, addresses are full of zeros and ones.
class RandomValues {
  public:
    explicit RandomValues(std::uint64_t seed) : engine_(seed) {}

    std::uint64_t below(std::uint64_t limit) { return engine_() % limit; }

    template <typename T>
    T make() {
        if constexpr (std::is_same_v<T, bool>) {
            return below(2) != 0;
        } else if constexpr (std::is_same_v<T, Lanx::AddressFamily>) {
            constexpr Lanx::AddressFamily all[] = {
                Lanx::AddressFamily::unset, Lanx::AddressFamily::ipv4, Lanx::AddressFamily::ipv6};
            return all[below(3)];
        } else if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
            return static_cast<T>(below(3) != 0 ? below(3) : engine_());
        } else if constexpr (Orb::IsStrongNumber<T>) {
            return T(make<typename T::Number>());
        } else if constexpr (std::is_same_v<T, Lanx::AddressBytes>) {
            return bytes();
        } else if constexpr (std::is_same_v<T, Lanx::IpGenAddr>) {
            return genAddr();
        } else if constexpr (std::is_same_v<T, Lanx::IpAddr> || std::is_same_v<T, Lanx::Ip6Addr>) {
            return T(bytes());
        } else if constexpr (Orb::IsValue<T>) {
            return composite<T>();
        } else if constexpr (requires(T value) { T::covering(value.addr(), 0u); }) {
            return covering<T>();
        } else if constexpr (requires(T value) { value.subnet(); }) {
            const auto address = make<std::remove_cvref_t<decltype(T().addr())>>();
            return T(address, length(bitsOf(address)));
        } else {
            return T(string());
        }
    }

  private:
    static unsigned bitsOf(const Lanx::IpGenAddr& address) { return address.bits(); }
    template <typename Addr>
    static unsigned bitsOf(const Addr&) {
        return Addr::bits;
    }

    unsigned length(unsigned bits) {
        return below(2) != 0 ? bits : static_cast<unsigned>(below(bits + 1));
    }

    Lanx::AddressBytes bytes() {
        static constexpr std::uint8_t usual[] = {0, 0, 0, 0, 1, 0x80, 0xff, 0xff};
        Lanx::AddressBytes result{};
        for (std::uint8_t& byte : result) {
            byte = below(16) != 0 ? usual[below(8)] : static_cast<std::uint8_t>(below(256));
        }
        return result;
    }

    Lanx::IpGenAddr genAddr() {
        switch (below(3)) {
        case 0:
            return {};
        case 1:
            return Lanx::IpAddr(bytes());
        default:
            return Lanx::Ip6Addr(bytes());
        }
    }

    template <typename Prefix>
    Prefix covering() {
        const auto address = make<std::remove_cvref_t<decltype(Prefix().addr())>>();
        return Prefix::covering(address, length(bitsOf(address)));
    }

    std::string string() {
        static constexpr std::string_view usual("aZ1'\\\n\0\x80\xff ", 10);
        std::string result;
        for (std::uint64_t count = below(4); count > 0; --count) {
            result += usual[below(usual.size())];
        }
        return result;
    }

    template <typename T>
    T composite() {
        T value;
        T::visitFields([&](std::string_view, auto member) { makeField(value.*member); });
        return value;
    }

    template <typename Field>
    void makeField(Field& field) {
        field = make<Field>();
    }

    std::mt19937_64 engine_;
};

} // namespace TestSupport
