#include "agent/cli/Cli.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "agent/base/Errors.h"
#include "agent/base/Utf8.h"
#include "agent/cli/Commands.h"
#include "agent/cli/HelpText.h"
#include "agent/output/Journal.h"
#include "agent/output/Output.h"
#include "agent/output/OutputFile.h"
#include "directnet/version.h"

namespace Agent {

namespace {

constexpr std::size_t maxMessage = 1000;

/// Prints a message as one line, whatever it quotes from an input, behind the output so far.
ExitStatus fail(ExitStatus status, std::string_view message) {
    std::cout.flush();
    const std::string line = printable(message.substr(0, maxMessage));
    writeErrorLine(severityPrefix(Severity::error) + line
                   + (message.size() > maxMessage ? "...\n" : "\n"));
    return status;
}

ExitStatus parseAndRun(CLI::App& app, int argc, const char* const* argv) {
    try {
        app.parse(argc, argv);
        finishOutput(std::cout);
    } catch (const CLI::Success& answer) { // --help, --version
        app.exit(answer, std::cout, std::cerr);
        finishOutput(std::cout);
    } catch (const CLI::ParseError& error) {
        return fail(ExitStatus::badInput,
                    "directnet: " + std::string(error.what()) + "; see --help");
    }
    return ExitStatus::fine;
}

/// Refuses values by a message of its own.
CLI::Validator validatorOf(const Argument::Complaint& complaint) {
    return {[complaint](const std::string& value) { return complaint(value); }, ""};
}

CLI::Option* addValue(CLI::App& app, const Argument& argument) {
    return std::visit(
        [&](auto* value) -> CLI::Option* {
            if constexpr (std::is_same_v<decltype(value), bool*>) {
                return app.add_flag(argument.name, *value, argument.help);
            } else {
                return app.add_option(argument.name, *value, argument.help);
            }
        },
        argument.value);
}

void addChecks(CLI::Option& option, const Argument& argument) {
    if (!argument.choices.empty()) {
        option.check(
            CLI::IsMember(std::set<std::string>(argument.choices.begin(), argument.choices.end())));
    }
    if (!argument.wordForLowest.empty()) {
        option.transform(CLI::Transformer(
            std::map<std::string, int>{{argument.wordForLowest, argument.range->first}}));
    }
    if (argument.range) {
        option.check(CLI::Range(argument.range->first, argument.range->second));
    }
    if (argument.complaint) {
        option.check(validatorOf(argument.complaint));
    }
}

void addArgument(CLI::App& app, const Argument& argument) {
    CLI::Option* option = addValue(app, argument);
    option->required(argument.isRequired);
    if (argument.isRepeated()) {
        option->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    }
    if (!argument.excludes.empty()) {
        option->excludes(app.get_option(argument.excludes));
    }
    addChecks(*option, argument);
}

CLI::App* addCommand(CLI::App& app, const Command& command) {
    CLI::App* added = app.add_subcommand(command.name, command.description);
    added->set_version_flag("--version", DIRECTNET_VERSION);
    added->formatter_fn([command](auto&&...) { return helpOfCommand(command); });
    for (const Argument& argument : command.arguments) {
        addArgument(*added, argument);
    }
    added->callback(command.run);
    return added;
}

} // namespace

int runCommandLine(int argc, const char* const* argv) {
    std::ios::sync_with_stdio(false);
    CLI::App app;
    app.name("directnet");
    app.set_version_flag("--version", DIRECTNET_VERSION);
    app.require_subcommand(1);
    const std::vector<Command> commands = {runCommand(),    showCommand(),    explainCommand(),
                                           watchCommand(),  waitCommand(),    reloadCommand(),
                                           traceCommand(),  tablesCommand(),  leaksCommand(),
                                           replayCommand(), ringlogCommand(), vipLogCommand()};
    app.formatter_fn([&commands](auto&&...) { return helpOfProgram(commands); });
    for (const Command& command : commands) {
        addCommand(app, command);
    }
    for (const Command& command : {manualCommand(commands), completionCommand(commands)}) {
        addCommand(app, command)->group(""); // not in --help
    }

    ExitStatus status = ExitStatus::failure;
    try {
        status = parseAndRun(app, argc, argv);
    } catch (const BadInputError& error) {
        status = fail(ExitStatus::badInput, error.what());
    } catch (const ReaderGoneError&) {
        status = ExitStatus::failure;
    } catch (const std::exception& error) {
        status = fail(ExitStatus::failure, "directnet: " + std::string(error.what()));
    }
    return static_cast<int>(status);
}

} // namespace Agent
