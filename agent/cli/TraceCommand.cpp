#include <memory>
#include <string>

#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"

namespace Agent {

namespace {

struct Options {
    int level = -1;
    std::string socket;
};

void setTrace(const Options& options) {
    AgentConnection answer(options.socket, {{"trace", options.level}});
    while (answer.next()) {
    }
}

} // namespace

void registerTrace(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = addCommand(app, "trace",
                                   "Set the text trace of a running agent, which goes "
                                   "to its standard error");
    command
        ->add_option("LEVEL", options->level,
                     "Trace up to LEVEL, from 0 (readiness) to 9 (all); off or -1 for nothing")
        ->required()
        ->transform(CLI::Transformer(std::map<std::string, int>{{"off", -1}}))
        ->check(CLI::Range(-1, 9));
    addSocketOption(*command, options->socket);
    command->callback([options] { setTrace(*options); });
}

} // namespace Agent
