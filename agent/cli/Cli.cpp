#include "agent/cli/Cli.h"

#include <exception>
#include <iostream>
#include <string>
#include <string_view>

#include "agent/base/Errors.h"
#include "agent/cli/Commands.h"
#include "agent/output/Output.h"
#include "agent/output/OutputFile.h"
#include "platform/ringlog/Printable.h"

namespace Agent {

namespace {

constexpr std::size_t maxMessage = 1000;

/// Prints a message as one line, whatever it quotes from an input, behind the output so far.
ExitStatus fail(ExitStatus status, std::string_view message) {
    std::cout.flush();
    std::string line;
    Ringlog::appendPrintable(line, message.substr(0, maxMessage));
    writeErrorLine(line + (message.size() > maxMessage ? "...\n" : "\n"));
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

} // namespace

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description) {
    CLI::App* command = app.add_subcommand(name, description);
    command->set_version_flag("--version", DIRECTNET_VERSION);
    return command;
}

void addRingOption(CLI::App& command, std::string& path) {
    command
        .add_option("--ring", path,
                    "Write the ring trace to FILE; %d becomes the process id, and /dev/null stands "
                    "for none")
        ->option_text("FILE")
        ->check(notEmpty());
}

void report(const std::string& message) {
    std::string line = "directnet: ";
    Ringlog::appendPrintable(line, message);
    writeErrorLine(line + '\n');
}

CLI::Validator notEmpty() {
    return {[](const std::string& value) {
                return std::string(value.empty() ? "must not be empty" : "");
            },
            ""};
}

void addSocketOption(CLI::App& command, std::string& path) {
    command
        .add_option("--socket", path,
                    "Where the agent listens; by default /run/directnet.sock for root, else "
                    "directnet.sock in the user's runtime folder")
        ->option_text("PATH")
        ->check(notEmpty());
}

int runCommandLine(int argc, const char* const* argv) {
    std::ios::sync_with_stdio(false);
    CLI::App app("Connected-route agent");
    app.name("directnet");
    app.set_version_flag("--version", DIRECTNET_VERSION);
    app.require_subcommand(1);
    registerRun(app);
    registerShow(app);
    registerWatch(app);
    registerTrace(app);
    registerReplay(app);
    registerRinglog(app);
    registerVipLog(app);

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
