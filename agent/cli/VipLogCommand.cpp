#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "agent/base/Errors.h"
#include "agent/cli/Commands.h"
#include "agent/output/Output.h"
#include "agent/viplog/VipChangePrinter.h"
#include "agent/viplog/VipLogFile.h"
#include "agent/viplog/VipLogReader.h"
#include "agent/viplog/VipTablesPrinter.h"

namespace Agent {

namespace {

struct VipLogOptions {
    std::string file;
    bool json = false;
    bool follow = false;
};

void printTables(const VipLogReader& tables, const VipLogOptions& options) {
    if (options.json) {
        printVipTablesAsJson(std::cout, tables);
    } else {
        printVipTables(std::cout, tables, Colour(useColour()));
    }
}

void printVipLog(const VipLogOptions& options) {
    VipLogFile log(options.file, options.follow);
    VipLogReader reader(log.name());
    std::optional<VipChangePrinter> changes; // from when the tables have been printed
    try {
        for (auto piece = log.read(); !piece.empty(); piece = log.read()) {
            if (options.follow && !changes) {
                piece = reader.feedToState(piece);
                if (reader.hasState()) {
                    printTables(reader, options);
                    changes.emplace(std::cout, options.json, Colour(useColour()), reader);
                }
            }
            reader.feed(piece);
            finishOutput(std::cout);
        }
        reader.finish();
    } catch (const BadInputError&) {
        if (!changes && reader.hasAnything()) {
            printTables(reader, options);
        }
        throw;
    }
    if (!changes) {
        printTables(reader, options);
    }
    finishOutput(std::cout);
}

} // namespace

Command vipLogCommand() {
    const auto options = std::make_shared<VipLogOptions>();
    return {.name = "vip-log",
            .description = "Print the tables that a log of virtual addresses ends with",
            .arguments = {{.name = "FILE",
                           .help = "The log, up to its end; - is standard input",
                           .value = &options->file,
                           .isRequired = true},
                          {.name = "--json",
                           .help = "Print the tables as one JSON document, changes as one object "
                                   "a line",
                           .value = &options->json},
                          {.name = "--follow",
                           .help = "Print the tables as they are at first, then each change as it "
                                   "is read, for as long as the log is being written",
                           .value = &options->follow}},
            .run = [options] { printVipLog(*options); }};
}

} // namespace Agent
