#pragma once

#include <cstdint>
#include <cstring>

#include "platform/lanx/IpGenPrefix.h"
#include "tables/layout/Records.h"

// The prefix of a record: its members `prefix`, `length` and `family`.

namespace Routing::Rib {

template <typename Record>
void storePrefix(Record& record, const Lanx::IpGenPrefix& prefix) {
    std::memcpy(record.prefix.address, prefix.addr().bytes().data(), sizeof record.prefix.address);
    record.length = static_cast<std::uint8_t>(prefix.len());
    record.family = static_cast<std::uint8_t>(prefix.af());
}

/// The record is one of a table, which takes in sound ones only.
template <typename Record>
Lanx::IpGenPrefix prefixOf(const Record& record) {
    Lanx::AddressBytes bytes{};
    std::memcpy(bytes.data(), record.prefix.address, bytes.size());
    if (record.family == Tables::ipv4) {
        return Lanx::IpGenPrefix::unchecked(Lanx::IpAddr(bytes), record.length);
    }
    return Lanx::IpGenPrefix::unchecked(Lanx::Ip6Addr(bytes), record.length);
}

} // namespace Routing::Rib
