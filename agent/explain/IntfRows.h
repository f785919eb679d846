#pragma once

#include <optional>
#include <string>

#include "agent/explain/PrefixRows.h"

namespace Agent {

/// An interface in a VRF, before its addresses there.
struct InterfaceRow {
    Lanx::IntfId intf;
    std::string vrf;
    NameOrNull netns;   // null where nothing says it
    std::string device; // "running", "not running" or "none"

    static void describe(auto& row, auto&& column) {
        column({"intf", "INTERFACE"}, row.intf);
        column({"vrf", "VRF"}, row.vrf);
        column({"netns", "NAMESPACE"}, row.netns);
        column({"device", "DEVICE"}, row.device);
    }
};

/// An address of the interface, before what it contributes.
struct AddressRow {
    Lanx::IpGenAddrWithMask address;
    std::string role;               // "primary", "secondary", "own" (IPv6) or "virtual"
    std::optional<std::string> why; // why it contributes nothing, or not all

    static void describe(auto& row, auto&& column) {
        column({"address", "ADDRESS"}, row.address);
        column({"role", "ROLE"}, row.role);
        column({"why", "WHY"}, row.why);
    }
};

/// A prefix that the address contributes to.
struct ContributionRow {
    std::optional<std::string> vrf; // that it is leaked to
    Lanx::IpGenPrefix prefix;
    Routing::Fib::RouteType type{};
    NameOrNull via;
    Standing standing;
    std::optional<Lanx::IntfId> winnerIntf; // of one that loses
    std::optional<Lanx::IpGenAddrWithMask> winnerAddress;

    static void describe(auto& row, auto&& column) {
        column({"vrf", "VRF"}, row.vrf);
        column({"prefix", "PREFIX"}, row.prefix);
        column({"type", "TYPE"}, row.type);
        column({"via", "VIA"}, row.via);
        Standing::describe(row.standing, column);
        column({"winnerIntf", "WINNER"}, row.winnerIntf);
        column({"winnerAddress", "WINNER ADDRESS"}, row.winnerAddress);
    }
};

} // namespace Agent
