#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "agent/base/Errors.h"
#include "agent/base/InputFile.h"
#include "agent/cli/Commands.h"
#include "agent/output/Output.h"
#include "platform/orb/value/Error.h"
#include "platform/ringlog/RinglogReader.h"

namespace Agent {

namespace {

void printRinglog(const std::string& file) {
    InputFile input(file);
    const std::string bytes{std::istreambuf_iterator<char>(&input.buffer()), {}};
    std::optional<Ringlog::RinglogReader> reader;
    try {
        reader.emplace(bytes);
    } catch (const Orb::ParseError& error) {
        throw BadInputError(file + ": " + error.what());
    }
    while (const std::optional<std::string> line = reader->next()) {
        if (!(std::cout << *line << '\n')) {
            break;
        }
    }
    finishOutput(std::cout);
    if (reader->damagedBlocks() > 0) {
        report(file + ": skipped damage in " + std::to_string(reader->damagedBlocks()) + " blocks");
    }
}

} // namespace

Command ringlogCommand() {
    const auto file = std::make_shared<std::string>();
    return {.name = "ringlog",
            .description = "Print a ring trace file as text",
            .arguments = {{.name = "FILE",
                           .help = "The ring trace file; - is standard input",
                           .value = file.get(),
                           .isRequired = true}},
            .run = [file] { printRinglog(*file); }};
}

} // namespace Agent
