#include "agent/server/Session.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/document/JsonWriter.h"
#include "agent/patch/DocumentError.h"
#include "agent/server/ReloadAnswer.h"
#include "agent/server/WaitAnswer.h"
#include "agent/server/WatchAnswer.h"
#include "agent/topics/Topics.h"
#include "agent/topics/VrfCatalog.h"
#include "agent/topics/VrfCursor.h"
#include "platform/ringlog/TraceHandle.h"

namespace Agent {

namespace {

/// What one turn adds at most to what is waiting for a client.
constexpr std::size_t linesAtOnce = 256;
constexpr std::size_t bytesAtOnce = std::size_t{64} << 10U;

} // namespace

Session::Session(FileDescriptor file, const AgentView& view, const ChangeLog& changes,
                 std::function<void(Session&)> onDone)
    : file_(std::move(file)), view_(view), changes_(changes), onDone_(std::move(onDone)),
      socket_(file_.get(), *this), timer_(*this) {
    timer_.notifierIs(Orb::Ptr<const Orb::Clock>(&view.clock));
    waitForClient();
}

void Session::onChanges() {
    if (!socket_.wantsWrite()) {
        socket_.wantsWriteIs(true);
        waitForClient();
    }
}

void Session::onTurn() {
    if (answer_ && !socket_.wantsWrite() && !answer_->isWaiting()) {
        socket_.wantsWriteIs(true);
        waitForClient();
    }
}

void Session::stop(int milliseconds) {
    if (!watching_) {
        return;
    }
    while (!answer_ && position_ < changes_.end() && fillFromLog()) {
    }
    if (isDropped_) {
        return;
    }
    appendJsonLine(waiting_, "end", true);
    pollfd polled{file_.get(), POLLOUT, 0};
    while (!waiting_.empty() && ::poll(&polled, 1, milliseconds) > 0 && send()) {
    }
}

/// The last thing that a callback does.
void Session::goOn(bool going) {
    if (!going) {
        const auto onDone = onDone_;
        onDone(*this);
    }
}

/// Returns false when the client is gone.
bool Session::receive() {
    std::array<char, Request::maxLength> buffer{};
    const ssize_t size = ::recv(file_.get(), buffer.data(), buffer.size(), 0);
    if (size < 0) {
        return errno == EAGAIN || errno == EINTR;
    }
    if (requested_) {
        // A client may have said all it has to say and still wait for its answer.
        socket_.wantsReadIs(size > 0);
        return size > 0 || !(watching_ || isHeld());
    }
    if (size == 0) {
        return false;
    }
    request_.append(buffer.data(), static_cast<std::size_t>(size));
    const std::size_t end = request_.find('\n');
    if (end == std::string::npos && request_.size() < Request::maxLength) {
        return true;
    }
    requested_ = true;
    if (end >= Request::maxLength) {
        refuse("the request is too long");
    } else {
        handle(request_.substr(0, end));
    }
    request_.clear();
    socket_.wantsWriteIs(true);
    waitForClient();
    return true;
}

void Session::handle(const std::string& line) {
    try {
        const Request request = readRequest(line);
        answer_ = answerTo(request);
        watching_ = request.isWatch;
        filter_ = ChangeFilter(request.vrf, request.routes);
        position_ = changes_.end();
    } catch (const FailureError& error) {
        refuse(error.what());
    } catch (const DocumentError& error) {
        refuse((error.pointer().empty() ? "" : error.pointer() + ": ") + error.what());
    }
}

/// Does what is asked for on the way. Throws DocumentError if the request's VRF does not exist,
/// FailureError for what cannot be done.
std::unique_ptr<Answer> Session::answerTo(const Request& request) const {
    // Of a watch the VRF may be yet to come.
    if (request.vrf && !request.isWatch && VrfCursor(view_, request.vrf).vrf() == nullptr) {
        throw DocumentError("/vrf", whyNotUp(*request.vrf));
    }
    if (request.traceLevel) {
        Ringlog::TraceHandle::levelOfAllIs(*request.traceLevel);
    }
    if (request.isReload) {
        return std::make_unique<ReloadAnswer>(*view_.control);
    }
    if (request.waitedFor) {
        return std::make_unique<WaitAnswer>(*view_.control, *request.waitedFor);
    }
    if (request.isWatch) {
        return std::make_unique<WatchAnswer>(view_, request.vrf, request.routes);
    }
    if (request.routes.isGiven()) {
        return answerRoutes(view_, request.vrf, request.routes);
    }
    return request.topic->answer(view_, request.vrf);
}

std::string Session::whyNotUp(const L3::VrfName& vrf) const {
    for (const KnownVrf& known : view_.catalog->knownVrfs()) {
        if (known.name == vrf && !known.obstacle.empty()) {
            return "VRF " + vrf.value() + " is not up: " + known.obstacle;
        }
    }
    return "no VRF " + vrf.value() + " is running";
}

void Session::refuse(const std::string& why) { appendJsonLine(waiting_, "error", why); }

/// One turn. Returns false when all is said, or the client is to be dropped.
bool Session::advance() {
    if (waiting_.size() < bytesAtOnce && !fill()) {
        return false;
    }
    if (!waiting_.empty()) {
        return send();
    }
    if (answer_ && !answer_->isWaiting()) {
        return true; // it had no line in all that it looked at
    }
    socket_.wantsWriteIs(false);
    timer_.timeMinIs(Orb::Clock::never);
    return watching_ || answer_;
}

/// Returns false when the client has missed something.
bool Session::fill() {
    for (std::size_t line = 0; answer_ && !answer_->isWaiting() && line < linesAtOnce; ++line) {
        if (waiting_.size() >= bytesAtOnce) {
            return true;
        }
        if (!answer_->appendNext(waiting_)) {
            answer_.reset();
            if (!watching_) {
                appendJsonLine(waiting_, "end", true);
            }
        }
    }
    return answer_ || !watching_ || fillFromLog();
}

bool Session::fillFromLog() {
    if (position_ < changes_.begin()) {
        return dropClient();
    }
    const std::string_view piece = changes_.at(position_);
    filter_.append(waiting_, piece);
    position_ += piece.size();
    return true;
}

bool Session::send() {
    const ssize_t size = ::send(file_.get(), waiting_.data() + sent_, waiting_.size() - sent_,
                                MSG_NOSIGNAL | MSG_DONTWAIT);
    if (size < 0) {
        return errno == EAGAIN || errno == EINTR;
    }
    sent_ += static_cast<std::size_t>(size);
    if (sent_ == waiting_.size()) {
        waiting_.clear();
        sent_ = 0;
    }
    waitForClient();
    return true;
}

void Session::waitForClient() { timer_.timeMinIs(view_.clock.now() + patience); }

} // namespace Agent
