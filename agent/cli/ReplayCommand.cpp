#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "agent/base/InputFile.h"
#include "agent/cli/Commands.h"
#include "agent/output/Output.h"
#include "agent/replay/Replay.h"
#include "agent/ring/RingPlace.h"
#include "agent/show/JsonPrinter.h"
#include "agent/show/TablePrinter.h"
#include "agent/viplog/VipLogWriter.h"
#include "platform/ringlog/TraceHandle.h"

namespace Agent {

namespace {

struct Options {
    std::string file;
    bool json = false;
    int traceLevel = Ringlog::TraceHandle::off;
    std::string vipLog;
    std::string ring;
};

void runReplay(const Options& options) {
    InputFile input(options.file);
    Ringlog::TraceHandle::levelOfAllIs(options.traceLevel);
    placeRing(options.ring, RingDefault::nowhere, report);
    std::unique_ptr<StatePrinter> printer;
    if (options.json) {
        printer = std::make_unique<JsonPrinter>(std::cout);
    } else {
        printer = std::make_unique<TablePrinter>(std::cout, useColour());
    }
    Replay replay(input.name(), input.buffer(), *printer);
    std::optional<VipLogWriter> vipLog;
    if (!options.vipLog.empty()) {
        vipLog.emplace(options.vipLog);
    }
    replay.onStartIs([&vipLog](const AgentRoot::RootSm& root) {
        reportRing(report);
        if (vipLog) {
            vipLog->attach(root.allVrfVirtualIpStatus(), root.allVrfVirtualIp6Status());
        }
    });
    replay.run();
    reportRing(report);
    replay.reportFullTables(report);
    if (vipLog) {
        vipLog->finish();
    }
}

} // namespace

void registerReplay(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = addCommand(app, "replay", "Run a scenario of device changes");
    command
        ->add_option("FILE", options->file,
                     "The scenario, one JSON line a step; - is standard input")
        ->required();
    command->add_flag("--json", options->json, "Print states as JSON documents, one a line");
    command
        ->add_option("--trace", options->traceLevel,
                     "Trace up to LEVEL on standard error, from 0 (readiness) to 9 (all)")
        ->option_text("LEVEL")
        ->check(CLI::Range(0, 9));
    command
        ->add_option("--vip-log", options->vipLog,
                     "Log every change of the tables of virtual addresses to FILE")
        ->option_text("FILE")
        ->check(notEmpty());
    addRingOption(*command, options->ring);
    command->callback([options] { runReplay(*options); });
}

} // namespace Agent
