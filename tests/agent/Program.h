#pragma once

#include <string>

namespace TestSupport {

/// What a run of the agent's executable left.
struct ProgramRun {
    int status; // exit status; -1 when a signal ended it
    std::string out;
    std::string err;
};

/// Runs the executable through the shell with `arguments`, which may redirect, and `input` as its
/// standard input.
ProgramRun runProgram(const std::string& arguments, const std::string& input = {});

std::string readFile(const std::string& path);

} // namespace TestSupport
