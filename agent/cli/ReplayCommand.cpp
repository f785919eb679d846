#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "agent/base/InputFile.h"
#include "agent/cli/Commands.h"
#include "agent/explain/Explanation.h"
#include "agent/output/Output.h"
#include "agent/replay/Replay.h"
#include "agent/ring/RingPlace.h"
#include "agent/topics/StatePrinter.h"
#include "agent/viplog/VipLogWriter.h"
#include "platform/ringlog/TraceHandle.h"

namespace Agent {

namespace {

struct ReplayOptions {
    std::string file;
    bool json = false;
    int traceLevel = Ringlog::TraceHandle::off;
    std::string vipLog;
    std::string ring;
    std::string explain;
};

/// Explains what is asked for, instead of showing the final state.
void explainEnd(const ReplayOptions& options, const AgentView& view) {
    const auto printer = options.json
                             ? printExplanationObjects(std::cout, options.explain)
                             : printExplanation(std::cout, Colour(useColour()), options.explain);
    printAnswer(*explain(view, readExplainTarget(options.explain), {}), *printer);
    finishOutput(std::cout);
}

void runReplay(const ReplayOptions& options) {
    InputFile input(options.file);
    Ringlog::TraceHandle::levelOfAllIs(options.traceLevel);
    placeRing(options.ring, RingDefault::nowhere, report);
    const auto printer = options.json ? makeStateDocuments(std::cout)
                                      : makeStateTables(std::cout, Colour(useColour()));
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
    if (!options.explain.empty()) {
        replay.onEndIs([&options](const AgentView& view) { explainEnd(options, view); });
    }
    replay.run();
    reportRing(report);
    replay.reportFullTables(report);
    if (vipLog) {
        vipLog->finish();
    }
}

} // namespace

Command replayCommand() {
    const auto options = std::make_shared<ReplayOptions>();
    return {.name = "replay",
            .description = "Run a scenario of device changes",
            .arguments = {{.name = "FILE",
                           .help = "The scenario, one JSON line a step; - is standard input",
                           .value = &options->file,
                           .isRequired = true},
                          {.name = "--json",
                           .help = "Print states as JSON documents, one a line",
                           .value = &options->json},
                          {.name = "--explain",
                           .help = "At the end print why, instead of the state: of a prefix or an "
                                   "address its route, of an interface what it contributes",
                           .value = &options->explain,
                           .placeholder = "WHAT",
                           .complaint = complaintAboutTarget},
                          traceOption(options->traceLevel),
                          vipLogOption(options->vipLog),
                          ringOption(options->ring)},
            .run = [options] { runReplay(*options); }};
}

} // namespace Agent
