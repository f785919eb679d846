#include "agent/service/ServiceManager.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <unistd.h>
#include <utility>

namespace Agent {

namespace {

/// Seconds until a message that found no room is sent again.
constexpr double resendPause = 0.1;
/// How often in each period the watchdog is told that all is well.
constexpr double perPeriod = 2;
constexpr double microsecond = 1e-6;

/// The number that a variable of the environment holds; none if it holds anything else.
std::optional<std::uint64_t> numberIn(const char* variable) {
    const char* const text = std::getenv(variable);
    if (text == nullptr) {
        return std::nullopt;
    }
    const char* const end = text + std::strlen(text);
    std::uint64_t number = 0;
    const auto result = std::from_chars(text, end, number);
    return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

double watchdogPeriod() {
    const bool isOurs = std::getenv("WATCHDOG_PID") == nullptr
                        || numberIn("WATCHDOG_PID") == static_cast<std::uint64_t>(::getpid());
    return isOurs ? static_cast<double>(numberIn("WATCHDOG_USEC").value_or(0)) * microsecond : 0;
}

} // namespace

ServiceManager::ServiceManager(Orb::Ptr<const Orb::Clock> clock)
    : socket_(std::getenv("NOTIFY_SOCKET")),
      watchdogPeriod_(socket_.isThere() ? watchdogPeriod() : 0) {
    resend_.notifierIs(clock);
    watchdog_.notifierIs(std::move(clock));
    if (watchdogPeriod_ > 0) {
        feedWatchdog();
    }
}

void ServiceManager::readyIs() { tell("READY=1"); }

void ServiceManager::reloadingIs() {
    // The supervisor tells by this time, of the clock that it goes by, which reload is meant.
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    tell("RELOADING=1\nMONOTONIC_USEC="
         + std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(now).count()));
}

void ServiceManager::stoppingIs() { tell("STOPPING=1"); }

void ServiceManager::statusIs(const std::string& text) { tell("STATUS=" + text); }

void ServiceManager::tell(std::string text) {
    if (socket_.isThere()) {
        waiting_.push_back(std::move(text));
        sendWaiting();
    }
}

void ServiceManager::sendWaiting() {
    while (!waiting_.empty() && socket_.send(waiting_.front())) {
        waiting_.pop_front();
    }
    resend_.timeMinIs(waiting_.empty() ? Orb::Clock::never
                                       : resend_.notifier()->now() + resendPause);
}

/// What finds no room is not kept: the next one says the same.
void ServiceManager::feedWatchdog() {
    static_cast<void>(socket_.send("WATCHDOG=1"));
    watchdog_.timeMinIs(watchdog_.notifier()->now() + watchdogPeriod_ / perPeriod);
}

} // namespace Agent
