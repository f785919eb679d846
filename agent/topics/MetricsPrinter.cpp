#include "agent/topics/MetricsText.h"
#include "agent/topics/StatusPrinter.h"

namespace Agent {

namespace {

using Type = MetricsText::Type;

std::uint64_t number(bool value) { return value ? 1 : 0; }

class MetricsPrinter final : public StatusPrinter {
  public:
    explicit MetricsPrinter(std::ostream& out) : out_(out) {}

  private:
    void print(const std::vector<VrfStatusRow>& vrfs, const AgentStatusRow& agent) override {
        agentIs(agent);
        clientsAre(agent);
        vrfsAre(vrfs);
        metrics_.finish();
        out_ << text_;
    }

    void agentIs(const AgentStatusRow& agent) {
        metrics_.family("directnet_build", Type::info, "The program.");
        metrics_.sample({{"version", agent.version}}, 1);
        one("directnet_uptime_seconds", Type::gauge, "Since the agent was started.",
            secondsText(agent.uptime.seconds), "seconds");
        one("directnet_ready", Type::gauge, "Whether the VRFs that it waited for were ready.",
            std::to_string(number(agent.isReady)));
        count("directnet_drains", "Drains of the backlogs of all VRFs.", agent.drains);
        one("directnet_longest_drain_seconds", Type::gauge, "The longest of them.",
            secondsText(agent.longestDrain.seconds), "seconds");
        count("directnet_netlink_overruns", "Times that announcements of the kernel were lost.",
              agent.overruns);
        count("directnet_netlink_relistings", "Times that links and addresses were listed anew.",
              agent.relistings);
        metrics_.family("directnet_reloads", Type::counter,
                        "Times that the configuration was read again, or could not be used.");
        metrics_.sample({{"outcome", "success"}}, agent.reloads.succeeded);
        metrics_.sample({{"outcome", "failure"}}, agent.reloads.failed);
        if (agent.reloads.last) {
            one("directnet_last_reload_successful", Type::gauge, "How the last one went.",
                std::to_string(number(!agent.reloads.failure)));
        }
    }

    void clientsAre(const AgentStatusRow& agent) {
        one("directnet_clients", Type::gauge, "Clients at present.", std::to_string(agent.clients));
        count("directnet_clients_dropped", "Clients that were too slow or silent.",
              agent.droppedClients);
        count("directnet_clients_refused", "Clients for which there was no place.",
              agent.refusedClients);
        metrics_.family("directnet_lines_dropped", Type::counter,
                        "Lines that nobody took in time.");
        metrics_.sample({{"stream", "output"}}, agent.droppedOutput);
        metrics_.sample({{"stream", "messages"}}, agent.droppedMessages);
    }

    void vrfsAre(const std::vector<VrfStatusRow>& vrfs) {
        metrics_.family("directnet_vrf_ready", Type::gauge,
                        "Whether the connected routes of a VRF are complete.");
        for (const VrfStatusRow& vrf : vrfs) {
            metrics_.sample({{"vrf", vrf.vrf}, {"family", "ipv4"}}, number(vrf.ready.ipv4));
            metrics_.sample({{"vrf", vrf.vrf}, {"family", "ipv6"}}, number(vrf.ready.ipv6));
        }
        metrics_.family("directnet_backlog", Type::gauge,
                        "Pairs of interface and prefix whose routes wait to be written.");
        for (const VrfStatusRow& vrf : vrfs) {
            metrics_.sample({{"vrf", vrf.vrf}}, vrf.backlog);
        }
        metrics_.family("directnet_routes", Type::gauge, "Routes.");
        for (const VrfStatusRow& vrf : vrfs) {
            routesAre(vrf.vrf, "ipv4", vrf.ipv4);
            routesAre(vrf.vrf, "ipv6", vrf.ipv6);
        }
    }

    void routesAre(std::string_view vrf, std::string_view family, const RouteCounts& counts) {
        counts.forEach([&](std::string_view type, std::uint64_t count) {
            metrics_.sample({{"vrf", vrf}, {"family", family}, {"type", type}}, count);
        });
    }

    void count(std::string_view name, std::string_view help, std::uint64_t value) {
        one(name, Type::counter, help, std::to_string(value));
    }
    void one(std::string_view name, Type type, std::string_view help, std::string_view value,
             std::string_view unit = {}) {
        metrics_.family(name, type, help, unit);
        metrics_.sample({}, value);
    }

    std::ostream& out_;
    std::string text_;
    MetricsText metrics_{text_};
};

} // namespace

std::unique_ptr<AnswerPrinter> printMetrics(std::ostream& out) {
    return std::make_unique<MetricsPrinter>(out);
}

} // namespace Agent
