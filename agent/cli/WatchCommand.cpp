#include <iostream>
#include <memory>
#include <string>

#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"
#include "agent/output/Output.h"
#include "agent/topics/ChangeRow.h"

namespace Agent {

namespace {

struct WatchOptions {
    bool json = false;
    std::string socket;
};

void watch(const WatchOptions& options) {
    const Colour colour(useColour());
    AgentConnection answer(options.socket, watchRequest());
    while (const auto line = answer.next()) {
        const JsonValue object = line->json.value();
        if (options.json) {
            std::cout << line->text << '\n';
        } else if (object.member("prefix").exists()) { // the line that says "complete" has none
            std::string text;
            appendChangeText(text, readRow<ChangeRow>(object), colour);
            std::cout << text;
        }
        if (!answer.hasMore()) {
            finishOutput(std::cout);
        }
    }
}

} // namespace

Command watchCommand() {
    const auto options = std::make_shared<WatchOptions>();
    return {.name = "watch",
            .description = "Show the routes of a running agent (=), then each route that comes "
                           "(+), changes (~) or goes (-). A change that happens while the routes "
                           "are still being shown follows after them.",
            .arguments = {{.name = "--json",
                           .help = "Print JSON, one object a line",
                           .value = &options->json},
                          socketOption(options->socket)},
            .run = [options] { watch(*options); }};
}

} // namespace Agent
