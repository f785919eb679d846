#include <iostream>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <vector>

#include "agent/base/SocketAddress.h"
#include "agent/cli/Commands.h"
#include "agent/output/Output.h"
#include "agent/ring/RingPlace.h"
#include "agent/run/LiveAgent.h"
#include "agent/show/JsonPrinter.h"
#include "agent/show/TablePrinter.h"
#include "platform/ringlog/TraceHandle.h"

namespace Agent {

namespace {

struct Options {
    bool once = false;
    bool json = false;
    int traceLevel = Ringlog::TraceHandle::off;
    std::vector<std::string> vrfs;
    std::string configFile;
    std::string socket;
    bool noSocket = false;
    std::string ring;
    std::string vipLog;
};

/// Namespaces and clients take descriptors, and the usual soft limit is for programs that select().
void raiseFileLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

void listen(LiveAgent& agent, const Options& options) {
    if (!options.socket.empty()) {
        agent.listen({options.socket, false});
    } else if (!options.once && !options.noSocket) {
        agent.listen({defaultSocketPath(), true});
    }
}

void run(const Options& options) {
    Ringlog::TraceHandle::levelOfAllIs(options.traceLevel);
    raiseFileLimit();
    placeRing(options.ring, options.once ? RingDefault::nowhere : RingDefault::stateFolder, report);
    LiveAgent agent({readVrfOptions(options.vrfs), options.configFile});
    listen(agent, options);
    if (!options.vipLog.empty()) {
        agent.logVirtualIps(options.vipLog);
    }
    if (!options.once) {
        agent.follow(options.json);
        return;
    }
    std::unique_ptr<StatePrinter> printer;
    if (options.json) {
        printer = std::make_unique<JsonPrinter>(std::cout);
    } else {
        printer = std::make_unique<TablePrinter>(std::cout, useColour());
    }
    agent.runOnce(*printer);
}

} // namespace

void registerRun(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = addCommand(app, "run", "Run live on this machine");
    command->description("Run live on this machine: the network namespace it is started in is the "
                         "VRF \"default\". Prints each route that comes (+), changes (~) or goes "
                         "(-), as it happens, until SIGINT or SIGTERM; the stop prints nothing.");
    command->add_flag("--once", options->once,
                      "Print the state once everything there is has been learned, and end");
    command->add_flag("--json", options->json, "Print JSON: one object a line");
    command
        ->add_option("--trace", options->traceLevel,
                     "Trace up to LEVEL on standard error, from 0 (readiness) to 9 (all)")
        ->option_text("LEVEL")
        ->check(CLI::Range(0, 9));
    command
        ->add_option("--vrf", options->vrfs,
                     "Follow the named network namespace NETNS as the VRF NAME, while there is "
                     "one; any number")
        ->option_text("NAME=NETNS")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command
        ->add_option("--config", options->configFile,
                     "A device document with virtualIps, leaks, ribWaits, vrfs.NAME.id and "
                     "gracefulRestart; SIGHUP reads it again")
        ->option_text("FILE")
        ->check(notEmpty());
    CLI::Option* socket =
        command
            ->add_option(
                "--socket", options->socket,
                "Where clients can ask the agent; by default /run/directnet.sock for root, "
                "else directnet.sock in the user's runtime folder, and nowhere with --once")
            ->option_text("PATH")
            ->check(notEmpty());
    command->add_flag("--no-socket", options->noSocket, "Let no clients ask")->excludes(socket);
    addRingOption(*command, options->ring);
    command
        ->add_option("--vip-log", options->vipLog,
                     "Log every change of the tables of virtual addresses to FILE")
        ->option_text("FILE")
        ->check(notEmpty());
    command->callback([options] { run(*options); });
}

} // namespace Agent
