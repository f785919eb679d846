#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "agent/base/Errors.h"
#include "agent/cli/Commands.h"
#include "agent/client/AgentConnection.h"

namespace Agent {

namespace {

using Time = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int noTimeout = -1;
/// Between two attempts to reach an agent that is not there.
constexpr milliseconds attemptPause(100);
/// A wait without an end is looked at as often.
constexpr milliseconds longestPiece(3600 * 1000);

struct WaitOptions {
    std::vector<std::string> vrfs;
    int timeout = noTimeout; // seconds
    std::string socket;
};

class Waiting {
  public:
    explicit Waiting(const WaitOptions& options)
        : options_(options), deadline_(Time::now() + std::chrono::seconds(options.timeout)) {}

    /// Throws FailureError at the deadline.
    void run() {
        while (!tryOnce()) {
            std::this_thread::sleep_for(std::min(attemptPause, left()));
            if (isOver()) {
                throw FailureError("not ready after " + std::to_string(options_.timeout)
                                   + " s: " + why_);
            }
        }
    }

  private:
    milliseconds left() const {
        return options_.timeout == noTimeout
                   ? longestPiece
                   : std::max(milliseconds(0),
                              std::chrono::ceil<milliseconds>(deadline_ - Time::now()));
    }
    bool isOver() const { return options_.timeout != noTimeout && Time::now() >= deadline_; }

    /// With one connection, for as long as it stands.
    bool tryOnce() {
        try {
            AgentConnection answer(options_.socket, waitRequest(options_.vrfs));
            while (!isOver()) {
                if (!answer.waitForMore(static_cast<int>(left().count()))) {
                    continue;
                }
                const auto line = answer.next();
                if (!line) {
                    return true;
                }
                why_.clear();
                for (const std::string& vrf : line->json.value().member("notReady").strings()) {
                    why_ += (why_.empty() ? "VRF " : ", VRF ") + vrf;
                }
            }
        } catch (const FailureError& error) {
            why_ = error.what();
        }
        return false;
    }

    const WaitOptions& options_;
    Time::time_point deadline_;
    std::string why_ = "the agent does not answer";
};

} // namespace

Command waitCommand() {
    const auto options = std::make_shared<WaitOptions>();
    Argument vrfs{.name = "--vrf",
                  .help = "Wait for this VRF; any number. Without, for those that the agent itself "
                          "waits for, see --ready-vrfs of run",
                  .value = &options->vrfs,
                  .placeholder = "NAME",
                  .complaint = complaintAboutVrf};
    return {.name = "wait",
            .description = "Wait until VRFs of the agent are ready, also for an agent that is not "
                           "there yet",
            .arguments = {std::move(vrfs),
                          {.name = "--timeout",
                           .help = "Give up after so many seconds, 1000000 at most, with status "
                                   "1; by default never",
                           .value = &options->timeout,
                           .placeholder = "SECONDS",
                           .range = {{0, 1000000}}},
                          socketOption(options->socket)},
            .run = [options] { Waiting(*options).run(); }};
}

} // namespace Agent
