#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <unistd.h>

namespace TestSupport {

/// A program, mostly the agent, running in the namespaces of the thread that started it. It and
/// what it starts are a process group, which is killed at the end; the program itself also when
/// the test process ends in any way.
class LiveProgram {
  public:
    /// The agent with these arguments as a shell reads them; `in` becomes its standard input.
    explicit LiveProgram(const std::string& arguments, int in = STDIN_FILENO);
    /// A shell command, in which $D is the agent's executable. With "exec" the program that it
    /// names is the one that is signalled and waited for.
    static LiveProgram ofShell(const std::string& command, int in = STDIN_FILENO);
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
    /// Until the agent has learned the namespace that it was started in and has said so.
    bool learned() { return untilOut("127.0.0.0/8"); }
    /// Until `show` with these arguments prints the text.
    bool untilShown(const std::string& arguments, const std::string& text);

    /// Goes away as the reader of standard output.
    void closeOut();
    void signal(int number) const;
    /// Waits for the end. Returns the exit status, -1 when a signal ended it.
    int wait();
    /// Sends the signal and waits.
    int endedBy(int number);

  private:
    struct Command {
        std::string text;
    };

    LiveProgram(Command command, int in);
    void read(int milliseconds);
    void killGroup();

    pid_t pid_;
    int outFile_ = -1;
    int errFile_ = -1;
    std::string out_;
    std::string err_;
};

} // namespace TestSupport
