#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/explain/Standing.h"
#include "agent/topics/StateRows.h"
#include "platform/lanx/IpGenAddrWithMask.h"

namespace Agent {

template <>
struct ValueForm<Lanx::IpGenAddrWithMask> {
    static void write(JsonWriter& out, const Lanx::IpGenAddrWithMask& value) {
        out.plainText(value);
    }
    static std::string text(const Lanx::IpGenAddrWithMask& value) { return value.toString(); }
    static Lanx::IpGenAddrWithMask read(const JsonValue& json) {
        return Lanx::IpGenAddrWithMask::fromString(json.string());
    }
};

/// The route of a prefix as it is written; null in JSON where there is none.
struct WrittenRoute {
    std::optional<RouteRow> row; // without its prefix
};

template <>
struct ValueForm<WrittenRoute> {
    static void write(JsonWriter& out, const WrittenRoute& value);
    static WrittenRoute read(const JsonValue& json);
};

/// What there is to say of a prefix in a VRF, before its contributors.
struct PrefixRow {
    NameOrNull vrf; // null where no VRF has anything of the prefix
    Lanx::IpGenPrefix prefix;
    WrittenRoute route;
    bool queued = false;            // the route may be about to change
    std::optional<std::string> why; // why there is no route, or not yet the right one
    std::optional<std::vector<std::string>> longer; // prefixes whose routes are not written yet

    static void describe(auto& row, auto&& column) {
        column({"vrf", "VRF"}, row.vrf);
        column({"prefix", "PREFIX"}, row.prefix);
        column({"route", "ROUTE"}, row.route);
        column({"queued", "QUEUED"}, row.queued);
        column({"why", "WHY"}, row.why);
        column({"longer", "LONGER"}, row.longer);
    }
};

/// A contributor of the prefix; they come in the order of precedence.
struct ContributorRow {
    Lanx::IntfId intf;
    Lanx::IpGenAddrWithMask address;
    std::string kind;                    // "own", "virtual" or "leaked"
    std::optional<NameOrNull> sourceVrf; // of a leaked one; null if no VRF has the id
    Routing::Fib::RouteType type{};
    NameOrNull via;
    Standing standing;

    static void describe(auto& row, auto&& column) {
        column({"intf", "INTERFACE"}, row.intf);
        column({"address", "ADDRESS"}, row.address);
        column({"kind", "KIND"}, row.kind);
        column({"sourceVrf", "SOURCE VRF"}, row.sourceVrf);
        column({"type", "TYPE"}, row.type);
        column({"via", "VIA"}, row.via);
        Standing::describe(row.standing, column);
    }
};

/// An address that would contribute to a prefix to which nobody does.
struct CandidateRow {
    Lanx::IntfId intf;
    Lanx::IpGenAddrWithMask address;
    std::string role; // as in an AddressRow
    std::string vrf;
    std::string whyNot;

    static void describe(auto& row, auto&& column) {
        column({"intf", "INTERFACE"}, row.intf);
        column({"address", "ADDRESS"}, row.address);
        column({"role", "ROLE"}, row.role);
        column({"vrf", "VRF"}, row.vrf);
        column({"whyNot", "WHY NOT"}, row.whyNot);
    }
};

} // namespace Agent
