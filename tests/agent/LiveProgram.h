#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace TestSupport {

/// The agent's executable, running in the namespaces of the thread that started it. Killed at the
/// end unless it has ended before.
class LiveProgram {
  public:
    explicit LiveProgram(const std::vector<std::string>& arguments);
    LiveProgram(const LiveProgram&) = delete;
    LiveProgram& operator=(const LiveProgram&) = delete;
    ~LiveProgram();

    pid_t pid() const { return pid_; }
    const std::string& out() const { return out_; }
    const std::string& err() const { return err_; }

    /// Takes in what the program prints until the condition holds. Returns false if it does not
    /// within a generous time.
    bool until(const std::function<bool()>& condition);
    bool untilOut(const std::string& text);
    bool untilErr(const std::string& text);

    void signal(int number) const;
    /// Waits for the end. Returns the exit status, -1 when a signal ended it.
    int wait();

  private:
    void read(int milliseconds);

    pid_t pid_;
    int outFile_ = -1;
    int errFile_ = -1;
    std::string out_;
    std::string err_;
};

/// What a shell command prints, in the namespaces of the calling thread.
std::string outputOf(const std::string& command);

} // namespace TestSupport
