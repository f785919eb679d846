#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "agent/topics/Row.h"

namespace Agent {

// The rows that a state of the agent is made of: its time, its VRFs, each with its routes, and what
// the tables of all VRFs hold.

struct TimeRow {
    ClockTime time;
    std::optional<std::string> label; // of a state that a scenario asks for

    static void describe(auto& row, auto&& column) {
        column({"time", "TIME"}, row.time);
        column({"label", "LABEL"}, row.label);
    }
};

/// Which families' connected routes are complete.
struct Readiness {
    bool ipv4 = false;
    bool ipv6 = false;
};

template <>
struct ValueForm<Readiness> {
    static void write(JsonWriter& out, const Readiness& value);
    static std::string text(const Readiness& value) {
        return value.ipv4 && value.ipv6 ? "yes" : "no";
    }
    static Readiness read(const JsonValue& json) {
        return {json.member("ipv4").boolean(), json.member("ipv6").boolean()};
    }
};

/// What the RIB has been told of a VRF that it waits for.
struct RibWait {
    bool ready = false;
    ClockTime readyTime;
};

template <>
struct ValueForm<std::optional<RibWait>> {
    static void write(JsonWriter& out, const std::optional<RibWait>& value);
    static std::string text(const std::optional<RibWait>& value);
    static std::optional<RibWait> read(const JsonValue& json) {
        return RibWait{json.member("ready").boolean(), {json.member("readyTime").number()}};
    }
};

template <>
struct ValueForm<std::optional<std::size_t>> {
    static void write(JsonWriter& out, const std::optional<std::size_t>& value) {
        out.value(*value);
    }
    static std::string text(const std::optional<std::size_t>& value) {
        return value ? std::to_string(*value) : "-";
    }
    static std::optional<std::size_t> read(const JsonValue& json) {
        return ValueForm<std::size_t>::read(json);
    }
};

struct VrfRow {
    std::string vrf;
    std::uint32_t id = 0;
    Readiness ready;
    std::optional<RibWait> rib;         // while the RIB waits for the VRF
    std::optional<std::size_t> backlog; // none where nobody is asked that knows it
    std::size_t ipv4Routes = 0;
    std::size_t ipv6Routes = 0;

    static void describe(auto& row, auto&& column) {
        column({"vrf", "VRF"}, row.vrf);
        describeState(row, column);
        describeRoutes(row, column);
    }
    static void describeRoutes(auto& row, auto&& column) {
        column.group("routes", [&](auto&& counts) {
            counts({"ipv4", "IPv4 ROUTES"}, row.ipv4Routes);
            counts({"ipv6", "IPv6 ROUTES"}, row.ipv6Routes);
        });
    }
    /// What the state document says under the VRF's name.
    static void describeState(auto& row, auto&& column) {
        column({"id", "ID"}, row.id);
        column({"ready", "READY"}, row.ready);
        column({"rib", "RIB"}, row.rib);
        column({"backlog", "BACKLOG"}, row.backlog);
    }
};

struct RouteRow {
    Lanx::IpGenPrefix prefix;
    Routing::Fib::RouteType type = {};
    Lanx::IntfId intf; // the empty one where the tables lack a record on the way to it
    NameOrNull via;    // which of the interface's via sets
    std::optional<NameOrNull> sourceVrf{}; // of a leaked route; null if no VRF has the id
    std::optional<std::string> kernel{};   // how it stands there, of one that is to be installed

    static void describe(auto& row, auto&& column) {
        describePrefix(row, column);
        describeTarget(row, column);
    }
    static void describePrefix(auto& row, auto&& column) {
        const bool isIpv6 = row.prefix.af() == Lanx::AddressFamily::ipv6;
        column({"prefix", isIpv6 ? "IPv6 PREFIX" : "IPv4 PREFIX"}, row.prefix);
    }
    /// What the state document says under the prefix.
    static void describeTarget(auto& row, auto&& column) {
        column({"type", "TYPE"}, row.type);
        column({"intf", "INTERFACE"}, row.intf);
        column({"via", "VIA"}, row.via);
        column({"sourceVrf", "SOURCE VRF", "from "}, row.sourceVrf);
        column({"kernel", "KERNEL", "kernel "}, row.kernel);
    }
};

struct TotalsRow {
    std::size_t ipv4Vias = 0;
    std::size_t ipv6Vias = 0;
    std::size_t viaSets = 0;

    static void describe(auto& row, auto&& column) {
        column.group("vias", [&](auto&& vias) {
            vias({"ipv4", "IPv4 VIAS"}, row.ipv4Vias);
            vias({"ipv6", "IPv6 VIAS"}, row.ipv6Vias);
        });
        column({"viaSets", "VIA SETS"}, row.viaSets);
    }
};

/// Takes a state row by row: its time, then each VRF, by name, followed by its routes in any order,
/// then the totals.
class StateSink {
  public:
    virtual ~StateSink() = default;

    virtual void time(const TimeRow& row) = 0;
    virtual void vrf(const VrfRow& row) = 0;
    virtual void route(const RouteRow& row) = 0;
    virtual void totals(const TotalsRow& row) = 0;
};

} // namespace Agent
