#include "tests/agent/Program.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

#include "tests/agent/LiveProgram.h"

namespace TestSupport {

ProgramRun runShell(const std::string& command, const std::string& input) {
    const std::unique_ptr<FILE, int (*)(FILE*)> in(std::tmpfile(), std::fclose);
    std::fwrite(input.data(), 1, input.size(), in.get());
    std::rewind(in.get());
    LiveProgram shell = LiveProgram::ofShell(command, ::fileno(in.get()));
    const int status = shell.wait();
    return {status, shell.out(), shell.err()};
}

ProgramRun runProgram(const std::string& arguments, const std::string& input) {
    return runShell("exec \"$D\" " + arguments, input);
}

std::string show(const std::string& arguments) { return runProgram("show " + arguments).out; }

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::size_t countOf(const std::string& part, const std::string& text) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

} // namespace TestSupport
