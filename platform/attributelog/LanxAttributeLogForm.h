#pragma once

#include <algorithm>
#include <concepts>

#include "platform/attributelog/AttributeLogForm.h"
#include "platform/lanx/AddrWithMask.h"
#include "platform/lanx/IntfId.h"

/// How addresses and interfaces stand in attribute logs: an address as its bytes, four or sixteen,
/// a mask length as one byte behind it, an interface by name.
namespace Orb {

template <typename Addr>
    requires std::same_as<Addr, Lanx::IpAddr> || std::same_as<Addr, Lanx::Ip6Addr>
struct AttributeLogForm<Addr> {
    static constexpr std::size_t size = Addr::bits / 8;

    static void write(std::string& out, const Addr& address) {
        const Lanx::AddressBytes bytes = address.bytes();
        out.append(bytes.begin(), bytes.begin() + size);
    }
    static Addr read(AttributeLogInput& in) {
        Lanx::AddressBytes bytes{};
        std::ranges::copy(in.bytes(size), bytes.begin());
        return Addr(bytes);
    }
};

template <typename Addr>
struct AttributeLogForm<Lanx::AddrWithMask<Addr>> {
    static void write(std::string& out, const Lanx::AddrWithMask<Addr>& address) {
        AttributeLogForm<Addr>::write(out, address.addr());
        out += static_cast<char>(address.len());
    }
    static Lanx::AddrWithMask<Addr> read(AttributeLogInput& in) {
        const Addr address = AttributeLogForm<Addr>::read(in);
        return {address, in.number<std::uint8_t>()};
    }
};

template <>
struct AttributeLogForm<Lanx::IntfId> {
    static void write(std::string& out, Lanx::IntfId intfId) {
        appendLogString(out, intfId.name());
    }
    static Lanx::IntfId read(AttributeLogInput& in) { return Lanx::IntfId(in.string()); }
};

} // namespace Orb
