#include <iostream>
#include <memory>
#include <string>

#include "agent/base/TextTable.h"
#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"
#include "agent/output/Output.h"
#include "agent/show/RouteText.h"

namespace Agent {

namespace {

using Json = AgentConnection::Json;

struct Options {
    bool json = false;
    std::string socket;
};

std::string textOf(const Json& value) {
    return printable(value.is_string() ? value.get<std::string>() : "-");
}

/// As a live agent prints its changes, with "=" before what is there in the beginning.
std::string lineOf(const Json& change) {
    const std::string kind = change.value("change", "");
    std::string line = kind == "is" ? "= " : kind == "comes" ? "+ " : kind == "goes" ? "- " : "~ ";
    line += textOf(change.at("vrf")) + ' ' + textOf(change.at("prefix"));
    if (change.contains("type")) {
        const auto type = static_cast<Routing::Fib::RouteType>(change.at("type").get<int>());
        line += "  " + routeTypeText(type) + "  " + textOf(change.at("intf")) + "  "
                + textOf(change.at("via"));
    }
    if (change.contains("sourceVrf")) {
        line += "  from " + textOf(change.at("sourceVrf"));
    }
    return line;
}

void watch(const Options& options) {
    AgentConnection answer(options.socket, {{"watch", true}});
    while (const auto change = answer.next()) {
        if (options.json) {
            std::cout << change->dump() << '\n';
        } else if (change->contains("prefix")) {
            std::cout << lineOf(*change) << '\n';
        }
        if (!answer.hasMore()) {
            finishOutput(std::cout);
        }
    }
}

} // namespace

void registerWatch(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        addCommand(app, "watch",
                   "Show the routes of a running agent (=), then each route that "
                   "comes (+), changes (~) or goes (-). A change that happens while "
                   "the routes are still being shown follows after them.");
    command->add_flag("--json", options->json, "Print JSON, one object a line");
    addSocketOption(*command, options->socket);
    command->callback([options] { watch(*options); });
}

} // namespace Agent
