#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace Agent {

/// Adds a command with the options that every command has.
CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description);

/// Refuses an empty value, such as that of a shell variable which is not set.
CLI::Validator notEmpty();

/// Adds the option that says where the running agent listens.
void addSocketOption(CLI::App& command, std::string& path);

/// Adds the option that says where the ring trace goes.
void addRingOption(CLI::App& command, std::string& path);

/// Says "directnet: MESSAGE" on standard error.
void report(const std::string& message);

/// One function per command, each in a source of its own: adds the command to the program. Its work
/// is done while the command line is parsed; it throws BadInputError and FailureError.
void registerReplay(CLI::App& app);
void registerRinglog(CLI::App& app);
void registerVipLog(CLI::App& app);
void registerRun(CLI::App& app);
void registerShow(CLI::App& app);
void registerWatch(CLI::App& app);
void registerTrace(CLI::App& app);

} // namespace Agent
