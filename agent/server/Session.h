#pragma once

#include <functional>
#include <memory>
#include <string>

#include "agent/base/FileDescriptor.h"
#include "agent/server/ChangeFilter.h"
#include "agent/server/ChangeLog.h"
#include "agent/server/Request.h"
#include "agent/topics/AgentView.h"
#include "agent/topics/Answer.h"
#include "platform/orb/loop/Clock.h"
#include "platform/orb/loop/FileDescriptorReactor.h"

namespace Agent {

/// One client of a running agent. Takes its request and sends the answer, one piece a turn of the
/// event loop; to a client that watches, then the changes. Buffers little and never waits: a client
/// that takes nothing for `patience` seconds, or has missed changes, is dropped.
///
/// One agent thread, no locks.
class Session {
  public:
    /// Seconds in which a client must send its request, or take something of what is waiting.
    static constexpr double patience = 5;

    /// `onDone` destroys the session. What the arguments refer to must outlive it.
    Session(FileDescriptor file, const AgentView& view, const ChangeLog& changes,
            std::function<void(Session&)> onDone);

    bool isWatching() const { return watching_; }
    /// Whether it ends because the client was too slow or said nothing.
    bool isDropped() const { return isDropped_; }
    /// Where a watching client stands in the log.
    ChangeLog::Position position() const { return position_; }
    /// The log has grown.
    void onChanges();
    /// The event loop has made a turn.
    void onTurn();
    /// The agent stops: a client that watches is told what is left to tell and that this is the
    /// end, as far as it takes that in pieces that are at most so many milliseconds apart.
    void stop(int milliseconds);

  private:
    class Socket : public Orb::FileDescriptorReactor {
      public:
        Socket(int descriptor, Session& owner) : FileDescriptorReactor(descriptor), owner_(owner) {}
        void onReadable() override { owner_.goOn(owner_.receive()); }
        void onWritable() override { owner_.goOn(owner_.advance()); }

      private:
        Session& owner_;
    };
    class Timer : public Orb::Clock::NotifieeConst {
      public:
        explicit Timer(Session& owner) : owner_(owner) {}
        void onTimeMin() override { owner_.goOn(owner_.dropClient()); }

      private:
        Session& owner_;
    };

    void goOn(bool going);
    bool dropClient() {
        isDropped_ = true;
        return false;
    }
    bool receive();
    void handle(const std::string& line);
    std::unique_ptr<Answer> answerTo(const Request& request) const;
    std::string whyNotUp(const L3::VrfName& vrf) const;
    void refuse(const std::string& why);
    bool advance();
    bool fill();
    bool fillFromLog();
    bool send();
    void waitForClient();
    bool isHeld() const { return answer_ && answer_->isWaiting(); }

    FileDescriptor file_;
    const AgentView& view_;
    const ChangeLog& changes_;
    std::function<void(Session&)> onDone_;
    Socket socket_;
    Timer timer_;
    std::string request_;
    bool requested_ = false;
    std::unique_ptr<Answer> answer_;
    bool watching_ = false;
    bool isDropped_ = false;
    ChangeLog::Position position_ = 0;
    ChangeFilter filter_; // of changes
    std::string waiting_;
    std::size_t sent_ = 0; // of waiting_
};

} // namespace Agent
