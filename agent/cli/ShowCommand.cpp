#include <iostream>
#include <memory>
#include <string>

#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"
#include "agent/output/Output.h"
#include "agent/topics/Topics.h"

namespace Agent {

namespace {

struct ShowOptions {
    std::string topic{topics().front()->name};
    std::string prefix;
    std::string intf;
    std::string vrf;
    bool json = false;
    std::string socket;
};

std::vector<std::string> topicNames() {
    std::vector<std::string> names;
    for (const Topic* topic : topics()) {
        names.emplace_back(topic->name);
    }
    return names;
}

std::string topicHelp() {
    std::string help = "What to show, " + std::string(topics().front()->name) + " unless given:";
    for (const Topic* topic : topics()) {
        help.append("\n  ").append(topic->name).append(": ").append(topic->help);
    }
    return help;
}

void show(const ShowOptions& options) {
    const Topic& topic = *findTopic(options.topic);
    AgentConnection answer(options.socket, showRequest(options.topic, options.vrf,
                                                       prefixText(options.prefix), options.intf));
    const auto printer =
        options.json ? topic.json(std::cout) : topic.tables(std::cout, Colour(useColour()));
    while (const auto line = answer.next()) {
        printer->line(line->json.value(), line->text);
    }
    printer->end();
    finishOutput(std::cout);
}

} // namespace

Command showCommand() {
    const auto options = std::make_shared<ShowOptions>();
    return {.name = "show",
            .description = "Show the state of a running agent. A large state is read while the "
                           "agent goes on: each VRF and route as it is at that moment.",
            .arguments = {{.name = "TOPIC",
                           .help = topicHelp(),
                           .value = &options->topic,
                           .choices = topicNames()},
                          prefixOption("PREFIX", options->prefix),
                          vrfOption(options->vrf, "Only this VRF; of leaks those out of it"),
                          {.name = "--intf",
                           .help = "Only routes that lead to this interface",
                           .value = &options->intf,
                           .placeholder = "NAME",
                           .complaint = complaintIfEmpty},
                          {.name = "--json",
                           .help = "Print JSON: routes as one state document, else one object a "
                                   "line",
                           .value = &options->json},
                          socketOption(options->socket)},
            .run = [options] { show(*options); }};
}

} // namespace Agent
