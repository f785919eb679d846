#include "agent/linux/NamespaceMonitor.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Agent::Linux {

namespace {

/// Datagrams and steps of a round that one call handles.
constexpr std::size_t announcementBatch = 256;
constexpr int roundBatch = 16;
/// From here on a listing of the whole namespace is the cheaper one.
constexpr std::size_t mostListedSingly = 16;
/// Seconds that a round waits for a burst to end.
constexpr double patience = 0.1;
/// Seconds that rounds are apart at most, whatever they cost.
constexpr double longestPause = 0.25;
/// Seconds after which a disturbed round is repeated, or one that failed; doubled with each further
/// failure.
constexpr double retryPause = 0.1;
constexpr double longestRetryPause = 5;

} // namespace

NamespaceMonitor::NamespaceMonitor(Options options)
    : options_(std::move(options)), view_(options_.netns, options_.vrf, options_.vrfDevices),
      netlink_(options_.netlink), failurePause_(retryPause) {}

void NamespaceMonitor::start() {
    markAll();
    beginRound();
}

double NamespaceMonitor::retryAt() const {
    // Whether the queue is empty decides how things go on, and an empty queue wakes nobody.
    bool atOnce = round_ ? roundReady_ : !recent_.isEmpty();
    if (overrun_ || atOnce) {
        return 0;
    }
    return round_ || marked_.isEmpty() ? std::numeric_limits<double>::infinity() : pauseUntil_;
}

void NamespaceMonitor::onReadable() {
    bool drained = readAnnouncements();
    if (isDue(drained)) {
        beginRound();
    }
    if (!round_) {
        netlink_.dropUnasked(); // it would keep the descriptor readable
        return;
    }
    advanceRound();
    if (!round_) {
        // Mostly nothing has come meanwhile, and that settles what was listed.
        readAnnouncements();
    }
}

bool NamespaceMonitor::isSettled() const {
    return synchronised_ && !round_ && marked_.isEmpty() && recent_.isEmpty() && !overrun_;
}

DevicePatch NamespaceMonitor::withdraw() {
    view_.replaceAll({});
    return view_.takePatch();
}

/// Returns whether the queue was empty in the end.
bool NamespaceMonitor::readAnnouncements() {
    messages_.clear();
    auto read = netlink_.readAnnouncements(messages_, announcementBatch);
    if (read == RouteNetlink::Announcements::Lost && !std::exchange(overrun_, true)) {
        ++counts_.overruns;
    }
    if (!overrun_) {
        for (const RouteMessage& message : messages_) {
            note(message);
        }
    }
    if (read != RouteNetlink::Announcements::Drained) {
        return false;
    }
    if (std::exchange(overrun_, false)) {
        markAll();
    }
    recent_ = round_ ? round_->links() : LinkSet();
    return true;
}

void NamespaceMonitor::note(const RouteMessage& message) {
    std::visit(
        [&](const auto& known) {
            bool inDoubt = marked_.contains(known.index) || recent_.contains(known.index);
            if (inDoubt || !view_.apply(known)) {
                mark(known.index);
            }
        },
        message);
}

void NamespaceMonitor::mark(int index) {
    if (marked_.isEmpty()) {
        markedAt_ = options_.clock();
    }
    marked_.add(index);
    if (marked_.indexes().size() > mostListedSingly || !netlink_.canListOne()) {
        marked_.addAll();
    }
}

void NamespaceMonitor::markAll() {
    if (marked_.isEmpty()) {
        markedAt_ = options_.clock();
    }
    marked_.addAll();
}

bool NamespaceMonitor::isDue(bool drained) const {
    if (marked_.isEmpty() || overrun_ || round_) {
        return false;
    }
    double now = options_.clock();
    return now >= pauseUntil_ && (drained || now >= markedAt_ + patience);
}

void NamespaceMonitor::beginRound() {
    counts_.relistings += synchronised_ ? 1 : 0;
    round_.emplace(netlink_, std::exchange(marked_, {}), options_.netlink.ipv4,
                   options_.netlink.ipv6);
    recent_.add(round_->links());
    roundBegan_ = options_.clock();
    roundReady_ = true;
}

void NamespaceMonitor::advanceRound() {
    for (int i = 0; i < roundBatch; ++i) {
        switch (round_->advance()) {
        case ListingRound::State::Running:
            roundReady_ = true;
            break;
        case ListingRound::State::Waiting:
            roundReady_ = false;
            return;
        case ListingRound::State::Done:
            endRound();
            return;
        case ListingRound::State::Failed:
            abandonRound();
            return;
        }
    }
}

void NamespaceMonitor::endRound() {
    round_->applyTo(view_);
    synchronised_ = synchronised_ || round_->links().isAll();
    double now = options_.clock();
    pauseUntil_ = now + std::min(now - roundBegan_, longestPause);
    if (!round_->isClean()) {
        markAll();
        pauseUntil_ = std::max(pauseUntil_, now + retryPause);
    }
    round_.reset();
    failure_.clear();
    failurePause_ = retryPause;
}

void NamespaceMonitor::abandonRound() {
    round_.reset();
    failure_ = netlink_.failure();
    markAll();
    pauseUntil_ = options_.clock() + failurePause_;
    failurePause_ = std::min(failurePause_ * 2, longestRetryPause);
}

} // namespace Agent::Linux
