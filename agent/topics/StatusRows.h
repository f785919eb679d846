#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "agent/topics/StateRows.h"

namespace Agent {

// What the status of an agent is made of: each of its VRFs, then the agent itself.

/// How many routes there are of each type, by the types' names.
class RouteCounts {
  public:
    static constexpr std::size_t types = 5;

    void add(Routing::Fib::RouteType type);
    void add(const RouteCounts& other);

    std::uint64_t total() const;

    /// Calls visit(name, count) for each type.
    template <typename Visit>
    void forEach(const Visit& visit) const {
        for (std::size_t i = 0; i < types; ++i) {
            visit(name(i), counts_[i]);
        }
    }

    friend struct ValueForm<RouteCounts>;

  private:
    static std::string_view name(std::size_t type);

    std::array<std::uint64_t, types> counts_{};
};

template <>
struct ValueForm<RouteCounts> {
    static void write(JsonWriter& out, const RouteCounts& value);
    static std::string text(const RouteCounts& value);
    static RouteCounts read(const JsonValue& json);
};

struct VrfStatusRow {
    std::string vrf;
    Readiness ready;
    std::uint64_t backlog = 0;
    RouteCounts ipv4;
    RouteCounts ipv6;

    static void describe(auto& row, auto&& column) {
        column({"vrf", "VRF"}, row.vrf);
        describeState(row, column);
    }
    /// What the status says under the VRF's name.
    static void describeState(auto& row, auto&& column) {
        column({"ready", "ready"}, row.ready);
        column({"backlog", "backlog"}, row.backlog);
        column.group("routes", [&](auto&& routes) {
            routes({"ipv4", "IPv4 routes"}, row.ipv4);
            routes({"ipv6", "IPv6 routes"}, row.ipv6);
        });
    }
};

/// How often the configuration was read again, and how that went the last time.
struct ReloadRecord {
    std::uint64_t succeeded = 0;
    std::uint64_t failed = 0;
    std::optional<std::string> last{};    // date and time
    std::optional<std::string> failure{}; // why the last one failed

    static void describe(auto& row, auto&& column) {
        column({"succeeded", "reloads"}, row.succeeded);
        column({"failed", "failed reloads"}, row.failed);
        column({"last", "last reload"}, row.last);
        column({"failure", "why it failed"}, row.failure);
    }
};

/// All times are in seconds, all counts since the agent was started.
struct AgentStatusRow {
    std::string version;
    std::int64_t pid = 0;
    ClockTime uptime;
    bool isReady = false; // those that it waits for are, or have been
    std::uint64_t drains = 0;
    ClockTime longestDrain;
    std::uint64_t overruns = 0;   // of the kernel's announcements
    std::uint64_t relistings = 0; // of links and addresses, behind the first
    std::uint64_t clients = 0;    // at present
    std::uint64_t droppedClients = 0;
    std::uint64_t refusedClients = 0;
    std::uint64_t droppedOutput = 0;   // lines
    std::uint64_t droppedMessages = 0; // lines
    ReloadRecord reloads{};

    static void describe(auto& row, auto&& column) {
        column({"version", "version"}, row.version);
        column({"pid", "process"}, row.pid);
        column({"uptime", "uptime"}, row.uptime);
        column({"ready", "ready"}, row.isReady);
        column.group("drains", [&](auto&& member) {
            member({"count", "drains"}, row.drains);
            member({"longest", "longest drain"}, row.longestDrain);
        });
        column.group("netlink", [&](auto&& member) {
            member({"overruns", "netlink overruns"}, row.overruns);
            member({"relistings", "relistings"}, row.relistings);
        });
        column.group("clients", [&](auto&& member) {
            member({"present", "clients"}, row.clients);
            member({"dropped", "dropped clients"}, row.droppedClients);
            member({"refused", "refused clients"}, row.refusedClients);
        });
        column.group("droppedLines", [&](auto&& member) {
            member({"output", "dropped output lines"}, row.droppedOutput);
            member({"messages", "dropped message lines"}, row.droppedMessages);
        });
        column.group("reloads",
                     [&](auto&& member) { ReloadRecord::describe(row.reloads, member); });
    }
};

} // namespace Agent
