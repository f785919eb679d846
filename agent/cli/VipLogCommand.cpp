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

struct Options {
    std::string file;
    bool json = false;
    bool follow = false;
};

void printTables(const VipLogReader& tables, const Options& options) {
    if (options.json) {
        printVipTablesAsJson(std::cout, tables);
    } else {
        printVipTables(std::cout, tables);
    }
}

void printVipLog(const Options& options) {
    VipLogFile log(options.file, options.follow);
    VipLogReader reader(log.name());
    std::optional<VipChangePrinter> changes; // from when the tables have been printed
    try {
        for (auto piece = log.read(); !piece.empty(); piece = log.read()) {
            if (options.follow && !changes) {
                piece = reader.feedToState(piece);
                if (reader.hasState()) {
                    printTables(reader, options);
                    changes.emplace(std::cout, options.json, reader);
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

void registerVipLog(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        addCommand(app, "vip-log", "Print the tables that a log of virtual addresses ends with");
    command->add_option("FILE", options->file, "The log, up to its end; - is standard input")
        ->required();
    command->add_flag("--json", options->json,
                      "Print the tables as one JSON document, changes as one object a line");
    command->add_flag("--follow", options->follow,
                      "Print the tables as they are at first, then each change as it is read, for "
                      "as long as the log is being written");
    command->callback([options] { printVipLog(*options); });
}

} // namespace Agent
