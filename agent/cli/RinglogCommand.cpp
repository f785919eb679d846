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
        std::cerr << file << ": skipped damage in " << reader->damagedBlocks() << " blocks\n";
    }
}

} // namespace

void registerRinglog(CLI::App& app) {
    const auto file = std::make_shared<std::string>();
    CLI::App* command = addCommand(app, "ringlog", "Print a ring trace file as text");
    command->add_option("FILE", *file, "The ring trace file; - is standard input")->required();
    command->callback([file] { printRinglog(*file); });
}

} // namespace Agent
