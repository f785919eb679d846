#include <iostream>
#include <memory>
#include <string>

#include "agent/base/Utf8.h"
#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"
#include "agent/output/Output.h"
#include "agent/topics/ConfigChangeRow.h"

namespace Agent {

namespace {

struct ReloadOptions {
    bool json = false;
    std::string socket;
};

void reload(const ReloadOptions& options) {
    const Colour colour(useColour());
    AgentConnection answer(options.socket, reloadRequest());
    while (const auto line = answer.next()) {
        if (options.json) {
            std::cout << line->text << '\n';
            continue;
        }
        const auto row = readRow<ConfigChangeRow>(line->json.value());
        std::cout << changeSign(row.change, colour) << ' ' << printable(row.pointer);
        if (row.value) {
            std::cout << "  " << printable(*row.value);
        }
        std::cout << '\n';
    }
    finishOutput(std::cout);
}

} // namespace

Command reloadCommand() {
    const auto options = std::make_shared<ReloadOptions>();
    return {.name = "reload",
            .description = "Have a running agent read its configuration again. Prints each value "
                           "that has come (+), changed (~) or gone (-), and ends once that has "
                           "become routes.",
            .arguments = {{.name = "--json",
                           .help = "Print JSON, one object a line",
                           .value = &options->json},
                          socketOption(options->socket)},
            .run = [options] { reload(*options); }};
}

} // namespace Agent
