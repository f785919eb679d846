#include <iostream>
#include <memory>
#include <string>

#include "agent/cli/Commands.h"
#include "agent/cli/InputFile.h"
#include "agent/show/Output.h"
#include "agent/viplog/VipLogReader.h"
#include "agent/viplog/VipTablesPrinter.h"

namespace Agent {

namespace {

struct Options {
    std::string file;
    bool json = false;
};

void printVipLog(const Options& options) {
    InputFile input(options.file);
    VipLogReader reader(input.name());
    reader.read(input.buffer());
    if (options.json) {
        printVipTablesAsJson(std::cout, reader);
    } else {
        printVipTables(std::cout, reader);
    }
    finishOutput(std::cout);
}

} // namespace

void registerVipLog(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        addCommand(app, "vip-log", "Print the tables that a log of virtual addresses ends with");
    command
        ->add_option("FILE", options->file,
                     "The log, read as it is written up to its end; - is standard input")
        ->required();
    command->add_flag("--json", options->json, "Print the tables as one JSON document");
    command->callback([options] { printVipLog(*options); });
}

} // namespace Agent
