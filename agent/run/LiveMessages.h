#pragma once

#include <string>
#include <string_view>

#include "agent/output/Journal.h"
#include "agent/output/OutputFile.h"
#include "agent/output/OutputQueue.h"

namespace Agent {

/// What a live agent says on standard error, its text trace included, without waiting for a reader:
/// lines that nobody takes are dropped, and their number is said once somebody reads on. A line is
/// written at once where there is room, so that it is out before whatever comes next.
///
/// One agent thread, no locks. There is one at a time.
class LiveMessages {
  public:
    /// Takes the text trace over, for as long as it lives.
    LiveMessages();
    LiveMessages(const LiveMessages&) = delete;
    LiveMessages& operator=(const LiveMessages&) = delete;
    ~LiveMessages();

    /// Says "directnet: MESSAGE" on one line, whatever it quotes.
    void report(std::string_view message, Severity severity = Severity::warning);

    /// Whether lines have the time of day before them.
    bool timestamps() const { return timestamps_; }
    void timestampsIs(bool has) { timestamps_ = has; }

    /// How many lines were dropped, ever.
    std::size_t dropped() const { return queue_.droppedInAll(); }

  private:
    void say(Severity severity, std::string_view line);

    OutputFile file_;
    OutputQueue queue_;
    bool timestamps_ = false;
};

} // namespace Agent
