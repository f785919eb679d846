#include <iostream>
#include <memory>
#include <set>
#include <string>

#include "agent/base/Utf8.h"
#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"
#include "agent/client/ShowPrinter.h"
#include "agent/output/Output.h"
#include "platform/orb/value/Error.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

namespace {

struct Options {
    std::string topic = "routes";
    std::string vrf;
    bool json = false;
    std::string socket;
};

/// What makes the text no name of a VRF; empty if it is one.
std::string complaintAboutVrf(const std::string& name) {
    if (name.empty() || !isUtf8(name)) {
        return "must be a name in UTF-8";
    }
    try {
        const L3::VrfName checked(name);
    } catch (const Orb::Error& error) {
        return error.what();
    }
    return {};
}

void show(const Options& options) {
    AgentConnection::Json request{{"show", options.topic}};
    if (!options.vrf.empty()) {
        request["vrf"] = options.vrf;
    }
    AgentConnection answer(options.socket, request);
    if (options.topic == "routes") {
        printRoutes(std::cout, answer, options.json);
    } else if (options.topic == "vrfs" && !options.json) {
        printVrfs(std::cout, answer);
    } else {
        printTopic(std::cout, answer, options.json);
    }
    finishOutput(std::cout);
}

} // namespace

void registerShow(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        addCommand(app, "show",
                   "Show the state of a running agent. A large state is read while the "
                   "agent goes on: each VRF and route as it is at that moment.");
    command
        ->add_option("TOPIC", options->topic,
                     "routes (also as a state document), vrfs, vips, leaks, backlog or trace")
        ->check(CLI::IsMember(
            std::set<std::string>{"routes", "vrfs", "vips", "leaks", "backlog", "trace"}));
    command->add_option("--vrf", options->vrf, "Only this VRF; of leaks those out of it")
        ->option_text("NAME")
        ->check(CLI::Validator(complaintAboutVrf, ""));
    command->add_flag("--json", options->json,
                      "Print JSON: routes as one state document, else one object a line");
    addSocketOption(*command, options->socket);
    command->callback([options] { show(*options); });
}

} // namespace Agent
