#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace TestSupport {

/// A program, mostly the agent, running in the namespaces of the thread that started it. Killed at
/// the end unless it has ended before.
class LiveProgram {
  public:
    /// The agent.
    explicit LiveProgram(std::vector<std::string> arguments);
    /// Any program, the path of which comes first; `in` becomes its standard input.
    LiveProgram(std::vector<std::string> command, int in);
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
    /// Sends the signal and waits.
    int endedBy(int number);

  private:
    void read(int milliseconds);

    pid_t pid_;
    int outFile_ = -1;
    int errFile_ = -1;
    std::string out_;
    std::string err_;
};

} // namespace TestSupport
