#pragma once

#include <string>

namespace TestSupport {

/// What a program that has ended left.
struct ProgramRun {
    int status; // exit status; -1 when a signal ended it
    std::string out;
    std::string err;
};

/// Runs a shell command with `input` as its standard input; $D is the agent's executable.
ProgramRun runShell(const std::string& command, const std::string& input = {});

/// Runs the agent's executable through the shell with `arguments`, which may redirect.
ProgramRun runProgram(const std::string& arguments, const std::string& input = {});

/// What `directnet show` prints.
std::string show(const std::string& arguments);

std::string readFile(const std::string& path);

std::size_t countOf(const std::string& part, const std::string& text);

} // namespace TestSupport
