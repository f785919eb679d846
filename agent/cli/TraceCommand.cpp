#include <memory>
#include <string>

#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"

namespace Agent {

namespace {

struct TraceOptions {
    int level = -1;
    std::string socket;
};

void setTrace(const TraceOptions& options) {
    AgentConnection answer(options.socket, traceRequest(options.level));
    while (answer.next()) {
    }
}

} // namespace

Command traceCommand() {
    const auto options = std::make_shared<TraceOptions>();
    return {.name = "trace",
            .description = "Set the text trace of a running agent, which goes to its standard "
                           "error",
            .arguments = {{.name = "LEVEL",
                           .help = "0 for readiness, up to 9 for everything; off or -1 for "
                                   "nothing",
                           .value = &options->level,
                           .isRequired = true,
                           .range = {{-1, 9}},
                           .wordForLowest = "off"},
                          socketOption(options->socket)},
            .run = [options] { setTrace(*options); }};
}

} // namespace Agent
