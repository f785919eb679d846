#include "tests/agent/LiveProgram.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace TestSupport {

namespace {

constexpr auto patience = std::chrono::seconds(90);
constexpr int pause = 20; // milliseconds between looks at a condition

void drain(int& file, std::string& text) {
    std::array<char, 65536> buffer{};
    const ssize_t size = ::read(file, buffer.data(), buffer.size());
    if (size > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(size));
    } else if (size == 0) {
        ::close(file);
        file = -1;
    }
}

} // namespace

LiveProgram::LiveProgram(std::vector<std::string> arguments)
    : LiveProgram((arguments.insert(arguments.begin(), DIRECTNET_EXECUTABLE), std::move(arguments)),
                  STDIN_FILENO) {}

LiveProgram::LiveProgram(std::vector<std::string> command, int in) {
    std::vector<char*> argv;
    argv.reserve(command.size() + 1);
    for (std::string& word : command) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (::pipe2(out.data(), O_CLOEXEC) != 0 || ::pipe2(err.data(), O_CLOEXEC) != 0) {
        std::abort();
    }
    pid_ = ::fork();
    if (pid_ == 0) {
        ::dup2(in, STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(out[1]);
    ::close(err[1]);
    outFile_ = out[0];
    errFile_ = err[0];
}

LiveProgram::~LiveProgram() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    ::close(outFile_);
    ::close(errFile_);
}

void LiveProgram::read(int milliseconds) {
    std::array<pollfd, 2> files{{{outFile_, POLLIN, 0}, {errFile_, POLLIN, 0}}};
    ::poll(files.data(), files.size(), milliseconds);
    if (files[0].revents != 0) {
        drain(outFile_, out_);
    }
    if (files[1].revents != 0) {
        drain(errFile_, err_);
    }
}

bool LiveProgram::until(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        read(pause);
    }
    return true;
}

bool LiveProgram::untilOut(const std::string& text) {
    return until([&] { return out_.find(text) != std::string::npos; });
}

bool LiveProgram::untilErr(const std::string& text) {
    return until([&] { return err_.find(text) != std::string::npos; });
}

void LiveProgram::signal(int number) const { ::kill(pid_, number); }

int LiveProgram::wait() {
    if (!until([&] { return outFile_ < 0 && errFile_ < 0; })) {
        ::kill(pid_, SIGKILL);
    }
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int LiveProgram::endedBy(int number) {
    signal(number);
    return wait();
}

} // namespace TestSupport
