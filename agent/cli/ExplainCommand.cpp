#include <iostream>
#include <memory>
#include <string>

#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"
#include "agent/explain/Explanation.h"
#include "agent/output/Output.h"
#include "agent/patch/DocumentError.h"

namespace Agent {

namespace {

struct ExplainOptions {
    std::string target;
    std::string vrf;
    bool json = false;
    std::string socket;
};

void explainOf(const ExplainOptions& options) {
    AgentConnection answer(options.socket, explainRequest(options.target, options.vrf));
    const auto printer = options.json
                             ? printExplanationObjects(std::cout, options.target)
                             : printExplanation(std::cout, Colour(useColour()), options.target);
    while (const auto line = answer.next()) {
        printer->line(line->json.value(), line->text);
    }
    printer->end();
    finishOutput(std::cout);
}

} // namespace

std::string complaintAboutTarget(const std::string& text) {
    try {
        static_cast<void>(readExplainTarget(text));
    } catch (const DocumentError& error) {
        return text.empty() ? error.what() : text + ' ' + error.what();
    }
    return {};
}

Command explainCommand() {
    const auto options = std::make_shared<ExplainOptions>();
    return {.name = "explain",
            .description = "Say why a route of a running agent is there or not: who contributes "
                           "to it, who wins and by what; or what an interface contributes, "
                           "address by address, and why others do not.",
            .arguments = {{.name = "WHAT",
                           .help = "A prefix; an address, for the longest prefix that it is in; "
                                   "or an interface",
                           .value = &options->target,
                           .isRequired = true,
                           .complaint = complaintAboutTarget},
                          vrfOption(options->vrf),
                          {.name = "--json",
                           .help = "Print JSON, one object a line for each VRF",
                           .value = &options->json},
                          socketOption(options->socket)},
            .run = [options] { explainOf(*options); }};
}

} // namespace Agent
