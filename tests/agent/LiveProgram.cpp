#include "tests/agent/LiveProgram.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include "tests/agent/Program.h"

namespace TestSupport {

namespace {

constexpr auto patience = std::chrono::seconds(90);
constexpr int pause = 20; // milliseconds between looks at a condition

/// The test process ends with the runner that started it, and takes its programs along.
[[maybe_unused]] const int endsWithItsRunner = ::prctl(PR_SET_PDEATHSIG, SIGKILL);

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

LiveProgram::LiveProgram(const std::string& arguments, int in)
    : LiveProgram(Command{"exec \"$D\" " + arguments}, in) {}

LiveProgram LiveProgram::ofShell(const std::string& command, int in) {
    return LiveProgram(Command{command}, in);
}

LiveProgram::LiveProgram(Command command, int in) {
    command.text.insert(0, "D='" DIRECTNET_EXECUTABLE "'; ");
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (::pipe2(out.data(), O_CLOEXEC) != 0 || ::pipe2(err.data(), O_CLOEXEC) != 0) {
        std::abort();
    }
    const pid_t test = ::getpid();
    pid_ = ::fork();
    if (pid_ == 0) {
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != test) {
            ::_exit(127); // it had ended before it could be followed
        }
        ::dup2(in, STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        ::execl("/bin/sh", "sh", "-c", command.text.c_str(), nullptr);
        ::_exit(127);
    }
    ::setpgid(pid_, pid_); // whoever comes first
    ::close(out[1]);
    ::close(err[1]);
    outFile_ = out[0];
    errFile_ = err[0];
}

LiveProgram::~LiveProgram() {
    killGroup();
    ::close(outFile_);
    ::close(errFile_);
}

void LiveProgram::killGroup() {
    if (pid_ > 0) {
        ::kill(-pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = 0;
    }
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

bool LiveProgram::untilShown(const std::string& arguments, const std::string& text) {
    return until([&] { return show(arguments).find(text) != std::string::npos; });
}

void LiveProgram::closeOut() {
    ::close(outFile_);
    outFile_ = -1;
}

void LiveProgram::signal(int number) const { ::kill(pid_, number); }

int LiveProgram::wait() {
    if (!until([&] { return outFile_ < 0 && errFile_ < 0; })) {
        signal(SIGKILL);
    }
    // What it has started goes before it is forgotten: until then nobody else gets its number.
    siginfo_t end{};
    ::waitid(P_PID, static_cast<id_t>(pid_), &end, WEXITED | WNOWAIT);
    killGroup();
    return end.si_code == CLD_EXITED ? end.si_status : -1;
}

int LiveProgram::endedBy(int number) {
    signal(number);
    return wait();
}

} // namespace TestSupport
