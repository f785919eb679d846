#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/cli/Commands.h"
#include "agent/cli/Completion.h"
#include "agent/cli/ManualPage.h"

namespace Agent {

namespace {

void printPage(const std::vector<Command>& commands, const std::string& name) {
    if (name.empty()) {
        writeProgramPage(std::cout, commands);
        return;
    }
    const auto command = std::ranges::find(commands, name, &Command::name);
    if (command == commands.end()) {
        throw BadInputError("directnet: there is no command " + name);
    }
    writeCommandPage(std::cout, *command);
}

} // namespace

Command manualCommand(std::vector<Command> commands) {
    const auto name = std::make_shared<std::string>();
    return {.name = "manual",
            .description = "Print a page of the manual in roff, of the program or a command",
            .arguments = {{.name = "COMMAND", .help = "The command", .value = name.get()}},
            .run = [name, commands = std::move(commands)] { printPage(commands, *name); }};
}

Command completionCommand(std::vector<Command> commands) {
    return {.name = "completion",
            .description = "Print a script by which bash completes the command line",
            .run = [commands = std::move(commands)] { writeCompletion(std::cout, commands); }};
}

} // namespace Agent
