#include <chrono>
#include <iostream>
#include <memory>
#include <string>

#include <directnet/tables.hpp>

#include "agent/base/Errors.h"
#include "agent/base/TablesPath.h"
#include "agent/cli/Commands.h"
#include "agent/output/Output.h"
#include "agent/tables/RoutePrinter.h"
#include "agent/tables/ShownTables.h"
#include "agent/tables/WriterReport.h"

namespace Agent {

namespace {

struct TablesOptions {
    std::string topic = "routes";
    std::string folder;
    std::string vrf;
    bool json = false;
    bool follow = false;
};

void showOnce(const TablesOptions& options, const TablesForm& form) {
    const std::string folder = tablesPathOr(options.folder);
    directnet::Tables tables(folder);
    tables.update();
    const directnet_writer writer = tables.writer();
    if (writer.present == 0 && options.topic != "leaks") {
        throw FailureError("no agent has had its tables in " + folder);
    }
    if (writer.present != 0) {
        WriterReport(report).check(writer);
    }
    showTables(std::cout, tables, options.topic, options.vrf, form);
}

/// How often the agent is looked at, which does not say that it has been stopped, and whoever reads
/// the output.
constexpr std::chrono::seconds lookPause(1);

void follow(const TablesOptions& options, const TablesForm& form) {
    if (options.topic != "routes") {
        throw BadInputError("directnet: --follow: only routes can be followed");
    }
    directnet::Tables tables(tablesPathOr(options.folder), DIRECTNET_TABLES_WAIT);
    RoutePrinter printer(std::cout, tables, options.vrf, form);
    WriterReport writer(report);
    for (std::string said; !isReaderGone();) {
        std::string error;
        try {
            printer.update();
        } catch (const directnet::TablesError& refused) {
            error = refused.what();
        }
        if (error != said && !error.empty()) {
            report(error);
        }
        said = error;
        writer.check(tables.writer());
        tables.wait(lookPause);
    }
    throw ReaderGoneError();
}

void readTables(const TablesOptions& options) {
    const TablesForm form{options.json, Colour(useColour())};
    if (options.follow) {
        follow(options, form);
    } else {
        showOnce(options, form);
    }
}

} // namespace

Command tablesCommand() {
    const auto options = std::make_shared<TablesOptions>();
    return {.name = "tables",
            .description = "Show the tables that an agent shares, by reading them; the agent is "
                           "not asked, and may be stopped or dead.",
            .arguments = {{.name = "TOPIC",
                           .help = "What to show, routes unless given:"
                                   "\n  routes: the routes of each VRF; as JSON the state document"
                                   "\n  vias: the interfaces that routes lead to"
                                   "\n  vrfs: the VRFs, whether they are ready and how many routes "
                                   "each has"
                                   "\n  leaks: the prefixes that VRFs leak to others",
                           .value = &options->topic,
                           .choices = {"routes", "vias", "vrfs", "leaks"}},
                          vrfOption(options->vrf, "Only this VRF; of leaks those out of it"),
                          {.name = "--json",
                           .help = "Print JSON: routes as one state document, else one object a "
                                   "line",
                           .value = &options->json},
                          {.name = "--follow",
                           .help = "Show the routes (=), then each that comes (+), changes (~) or "
                                   "goes (-), whatever becomes of the agent",
                           .value = &options->follow},
                          tablesOption(options->folder)},
            .run = [options] { readTables(*options); }};
}

} // namespace Agent
