#include <chrono>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/base/WallTime.h"
#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"
#include "agent/output/Output.h"
#include "agent/topics/ChangeRow.h"

namespace Agent {

namespace {

/// Between two attempts to reach an agent that is not there.
constexpr std::chrono::milliseconds reconnectPause(200);
/// Milliseconds between two looks at who reads the output.
constexpr int readerPause = 1000;

struct WatchOptions {
    std::string vrf;
    std::string prefix;
    bool json = false;
    bool timestamps = false;
    bool reconnect = false;
    std::string socket;
};

class Watch {
  public:
    explicit Watch(const WatchOptions& options) : options_(options) {}

    void run() {
        if (options_.reconnect) {
            for (;; std::this_thread::sleep_for(reconnectPause)) {
                tryOnce();
            }
        }
        follow();
    }

  private:
    /// Until the agent has stopped. Throws FailureError when it cannot be reached or is cut off.
    void follow() {
        AgentConnection answer(options_.socket,
                               watchRequest(options_.vrf, prefixText(options_.prefix)));
        bool isFirst = true;
        while (const auto line = answer.next()) {
            if (std::exchange(isFirst, false)) {
                begin();
            }
            handle(*line);
            if (!answer.hasMore()) {
                finishOutput(std::cout);
                waitFor(answer);
            }
        }
        finishOutput(std::cout);
    }

    /// An agent answers.
    void begin() {
        said_.clear();
        if (std::exchange(wasConnected_, true) && options_.json) {
            print("{\"change\":\"reconnected\"}\n");
        }
    }

    /// Waits for the next line. Throws ReaderGoneError when there is nobody to read it.
    static void waitFor(const AgentConnection& answer) {
        while (!answer.waitForMore(readerPause)) {
            failWithoutReader();
        }
    }
    static void failWithoutReader() {
        if (isReaderGone()) {
            throw ReaderGoneError();
        }
    }

    /// Follows one agent, if there is one. Says, once for each cause, why there is nothing more to
    /// be seen.
    void tryOnce() {
        std::string why = "the agent has stopped";
        try {
            follow();
        } catch (const FailureError& error) {
            if (!std::cout) {
                throw; // another agent would not help
            }
            failWithoutReader();
            why = error.what();
        }
        if (why != said_) {
            report(why + "; waiting for it");
            said_ = why;
        }
    }

    void handle(const AgentConnection::Line& line) {
        const JsonValue object = line.json.value();
        if (options_.json) {
            print(line.text + '\n');
        } else if (object.member("prefix").exists()) { // the line that says "complete" has none
            std::string text;
            appendChangeText(text, readRow<ChangeRow>(object), colour_);
            print(text);
        }
    }

    void print(const std::string& line) {
        std::cout << (options_.timestamps ? stamped(line, options_.json) : line);
    }

    const WatchOptions& options_;
    Colour colour_{useColour()};
    bool wasConnected_ = false;
    std::string said_;
};

} // namespace

Command watchCommand() {
    const auto options = std::make_shared<WatchOptions>();
    return {.name = "watch",
            .description = "Show the routes of a running agent and each change that follows: "
                           "first the routes (=), then those that come (+), change (~) or go (-). "
                           "A change that happens while the routes are still being shown follows "
                           "after them. Ends with status 0 when the "
                           "agent is stopped, with 1 when it dies.",
            .arguments = {vrfOption(options->vrf),
                          prefixOption("--prefix", options->prefix),
                          {.name = "--json",
                           .help = "Print JSON, one object a line",
                           .value = &options->json},
                          timestampsOption(options->timestamps),
                          {.name = "--reconnect",
                           .help = "Go on with the next agent, beginning with its routes",
                           .value = &options->reconnect},
                          socketOption(options->socket)},
            .run = [options] { Watch(*options).run(); }};
}

} // namespace Agent
