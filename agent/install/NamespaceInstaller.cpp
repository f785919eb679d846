#include "agent/install/NamespaceInstaller.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <utility>

#include "platform/orb/value/Error.h"

namespace Agent {

namespace {

/// Seconds of one turn.
constexpr double longestTurn = 0.01;
/// Seconds that rounds of listings are apart at most, whatever they cost; that one waits after a
/// listing which failed; between attempts at what was refused; between looks at proxy neighbours.
constexpr double longestPause = 0.25;
constexpr double failurePause = 0.1;
constexpr double refusedPause = 1;
constexpr double proxiesPause = 10;
/// Seconds between attempts to open the namespace; doubled with each.
constexpr double firstOpenPause = 0.1;
constexpr double longestOpenPause = 5;

constexpr int receiveBuffer = 4 << 20;
/// What the kernel counts at most for an announcement or a refusal that waits.
constexpr int answerSize = 2048;
constexpr std::size_t largestBatch = 512;
constexpr std::size_t firstBatch = 16;

} // namespace

NamespaceInstaller::NamespaceInstaller(Options options)
    : options_(std::move(options)), table_(links_, options_.report, options_.isReleased),
      retry_(*this), pause_(firstOpenPause) {
    retry_.notifierIs(options_.clock);
    open();
}

void NamespaceInstaller::open() {
    try {
        openSocket();
    } catch (const Orb::Error& error) {
        socket_.reset();
        fail(error.what());
        retry_.timeMinIs(options_.clock->now() + pause_);
        pause_ = std::min(pause_ * 2, longestOpenPause);
        return;
    }
    watcher_.emplace(socket_->fd(), options_.clock, [this] { work(); });
    needed_.set();
    wake();
}

/// Says it once that nothing can be done here.
void NamespaceInstaller::fail(const std::string& why) {
    if (failure_ != why) {
        failure_ = why;
        options_.report("routes are not installed: " + why);
    }
}

void NamespaceInstaller::openSocket() {
    const auto netns =
        options_.netns ? Linux::NetworkNamespace(*options_.netns) : Linux::NetworkNamespace();
    netns.run([this] { socket_.emplace(); });
    socket_->resizeBuffer(receiveBuffer);
    socket_->checkStrictly();
    socket_->askForWords();
    for (const int group : {RTNLGRP_LINK, RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV4_ROUTE,
                            RTNLGRP_IPV6_ROUTE, RTNLGRP_IPV6_NETCONF}) {
        socket_->subscribe(group);
    }
    // A quarter, since others' announcements come in between.
    mostAtOnce_ = std::clamp<std::size_t>(
        static_cast<std::size_t>(socket_->bufferSize() / 4 / answerSize), 1, largestBatch);
    batch_ = std::min(firstBatch, mostAtOnce_);
}

void NamespaceInstaller::want(const KernelSlot& slot, const InstallWant& want) {
    if (slot.isProxy()) {
        ProxyLink& link = proxyLinks_[{slot.proxyLink, slot.table}];
        link.vrf = want.vrf;
        if (link.proxies++ == 0) {
            checkProxies();
        }
    }
    table_.want(slot, want);
    wake();
}

void NamespaceInstaller::unwant(const KernelSlot& slot) {
    const std::pair link(slot.proxyLink, slot.table);
    if (slot.isProxy() && --proxyLinks_[link].proxies == 0) {
        proxyLinks_.erase(link);
    }
    table_.unwant(slot);
    wake();
}

std::string NamespaceInstaller::state(const KernelSlot& slot) const {
    std::string text = table_.state(slot);
    if (slot.isProxy() && text == "installed") {
        if (const std::string off = links_.obstacle(slot.proxyLink); !off.empty()) {
            text.append(", but ").append(off).append(" on ").append(slot.proxyLink.name());
        }
    }
    return text;
}

void NamespaceInstaller::reviewLeftovers() {
    table_.lookAgain(false);
    wake();
}

std::size_t NamespaceInstaller::removeAll(double deadline) {
    if (!socket_) {
        return table_.entries();
    }
    table_.clear();
    needed_.set();
    listAt_ = 0;
    while (!isIdle() && options_.clock->now() < deadline) {
        pollfd file{socket_->fd(), POLLIN, 0};
        ::poll(&file, 1, 1);
        work();
    }
    return table_.entries();
}

// --- The loop.

void NamespaceInstaller::work() {
    const double end = options_.clock->now() + longestTurn;
    while (step()) {
        if (options_.clock->now() >= end) {
            wake(); // after the others have had their turn
            return;
        }
    }
    watcher_->wakeAt(nextTime());
}

/// When something is due though nothing was announced.
double NamespaceInstaller::nextTime() const {
    double time = doubtedAt_;
    if (needed_.any()) {
        time = std::min(time, listAt_);
    }
    if (hasChanged_ && table_.hasRefused()) {
        time = std::min(time, retryAt_);
    }
    return table_.hasProxies() ? std::min(time, proxiesAt_) : time;
}

/// Does one thing. Returns whether there was one.
bool NamespaceInstaller::step() {
    switch (socket_->receive()) {
    case Linux::NetlinkSocket::Reading::Data:
        if (!isLost_) {
            socket_->forEachMessage([this](const nlmsghdr& header) { handle(header); });
        }
        return true;
    case Linux::NetlinkSocket::Reading::Lost:
        isLost_ = true; // the kernel drops all further ones until the queue was empty
        return true;
    case Linux::NetlinkSocket::Reading::Empty:
        break;
    }
    return afterDrain();
}

/// What the kernel has done and said so far is known.
bool NamespaceInstaller::afterDrain() {
    const double now = options_.clock->now();
    if (isLost_ || listing_) { // a listing that nothing is left of goes on no more
        isLost_ = false;
        listing_.reset();
        round_.reset();
        needed_.set();
        listAt_ = std::max(listAt_, now + (isSynchronised() ? 0 : failurePause));
    }
    for (const auto& request : std::exchange(asked_, {})) {
        if (request) {
            table_.done(*request);
        }
    }
    if (table_.takeDoubt()) {
        noteRoutes();
        doubtedAt_ = std::min(doubtedAt_, now + refusedPause);
    }
    if (table_.hasProxies() && now >= proxiesAt_) {
        note(Listing::proxies);
    }
    if (round_.any() || (needed_.any() && now >= listAt_)) {
        return beginListing();
    }
    if (!isSynchronised()) {
        return false;
    }
    if (now >= doubtedAt_) {
        doubtedAt_ = never;
        table_.retryDoubted();
    }
    if (hasChanged_ && table_.hasRefused() && now >= retryAt_) {
        hasChanged_ = false;
        retryAt_ = now + refusedPause;
        table_.lookAgain(true);
    }
    if (!table_.hasRequests()) {
        return false;
    }
    sendRequests();
    return true;
}

bool NamespaceInstaller::isIdle() const {
    return isSynchronised() && needed_.none() && round_.none() && !listing_ && asked_.empty()
           && !isLost_ && !table_.hasRequests();
}

void NamespaceInstaller::sendRequests() {
    requests_.clear();
    table_.takeRequests(requests_, batch_);
    message_.clear();
    askedFrom_ = sequence_ + 1;
    for (const InstallTable::Request& request : requests_) {
        appendEntryRequest(message_, request.entry, options_.protocol, request.add, ++sequence_);
        asked_.emplace_back(request);
    }
    const double began = options_.clock->now();
    const int code = message_.empty() || socket_->send(message_) ? 0 : errno;
    // Some kinds cost a kernel the more the more there are of them.
    const bool tookLong = options_.clock->now() - began > longestTurn / 2;
    batch_ = tookLong ? std::max<std::size_t>(batch_ / 2, 1) : std::min(batch_ * 2, mostAtOnce_);
    if (code != 0) {
        for (const auto& request : std::exchange(asked_, {})) {
            table_.refused(*request, code, std::strerror(code));
        }
    }
}

// --- Listings.

void NamespaceInstaller::noteRoutes() {
    note(Listing::ipv4Routes);
    note(Listing::ipv6Routes);
    if (table_.hasProxies()) {
        note(Listing::proxies);
    }
}

bool NamespaceInstaller::beginListing() {
    if (round_.none()) {
        round_ = std::exchange(needed_, {});
        roundBegan_ = options_.clock->now();
    }
    std::size_t next = 0;
    while (!round_.test(next)) {
        ++next;
    }
    round_.reset(next);
    listing_ = static_cast<Listing>(next);
    listingSequence_ = ++sequence_;
    isInterrupted_ = false;
    if (*listing_ == Listing::links) {
        links_.beginListing();
    }
    table_.beginListing();
    if (socket_->send(listingRequest(*listing_, options_.protocol, listingSequence_))) {
        return true;
    }
    endListing(false);
    return false;
}

/// What was not listed is gone, if the listing is whole.
void NamespaceInstaller::endListing(bool isWhole) {
    const Listing listing = *std::exchange(listing_, std::nullopt);
    if (isWhole) {
        known_.set(static_cast<std::size_t>(listing));
    }
    if (!isWhole) {
        note(listing);
    } else if (listing == Listing::links) {
        links_.endListing();
    } else {
        table_.endListing(listing);
    }
    if (listing == Listing::proxies) {
        proxiesAt_ = options_.clock->now() + proxiesPause;
    }
    if (round_.none()) {
        endRound();
    }
}

void NamespaceInstaller::endRound() {
    const double now = options_.clock->now();
    listAt_ = now + std::min(now - roundBegan_, longestPause);
    if (needed_.any()) {
        listAt_ = std::max(listAt_, now + failurePause);
    }
    table_.lookAgain(false);
    checkProxies();
}

// --- What the kernel says.

void NamespaceInstaller::handle(const nlmsghdr& header) {
    if (handleAnswer(header)) {
        return;
    }
    const bool isListed =
        listing_ && header.nlmsg_seq == listingSequence_ && (header.nlmsg_flags & NLM_F_MULTI) != 0;
    if (isListed) {
        isInterrupted_ = isInterrupted_ || (header.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
    }
    if (const auto link = Linux::LinkMessage::parse(header)) {
        links_.apply(*link);
    } else if (const auto setting = parseProxySettingMessage(header)) {
        links_.apply(*setting);
    } else if (const auto entry = parseEntryMessage(header)) {
        handleEntry(*entry);
        if (entry->protocol == options_.protocol) {
            return; // nothing that others have changed
        }
    }
    if (!isListed) {
        handleAnnounced(header);
    }
}

void NamespaceInstaller::handleEntry(const EntryMessage& message) {
    if (message.protocol != options_.protocol) {
        if (message.entry.isProxy) {
            table_.foreignProxyIs(message.entry);
        }
    } else if (message.removed) {
        table_.entryGone(message.entry);
    } else {
        table_.entryIs(message.entry);
    }
}

/// Handles the end of a listing and refusals.
bool NamespaceInstaller::handleAnswer(const nlmsghdr& header) {
    const auto answer = parseRefusalMessage(header);
    if (!answer) {
        return false;
    }
    const std::uint32_t place = answer->sequence - askedFrom_;
    if (listing_ && answer->sequence == listingSequence_) {
        const bool wasChanged = isInterrupted_ || (header.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
        // A kernel without a family or its settings has nothing to list.
        const bool isAbsent = answer->code == EOPNOTSUPP || answer->code == EAFNOSUPPORT;
        if (answer->code != 0 && !isAbsent) {
            fail("the kernel does not list them: " + answer->words);
        }
        endListing(isAbsent || (answer->code == 0 && !wasChanged));
    } else if (place < asked_.size() && asked_[place] && answer->code != 0) {
        const InstallTable::Request request = *std::exchange(asked_[place], std::nullopt);
        table_.refused(request, answer->code, answer->words);
    }
    return true;
}

/// Notes what an announced change leaves in doubt, or lets hope for.
void NamespaceInstaller::handleAnnounced(const nlmsghdr& header) {
    hasChanged_ = true;
    switch (header.nlmsg_type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
        noteRoutes();
        break;
    case RTM_DELADDR:
        note(Listing::ipv4Routes);
        break;
    case RTM_NEWNETCONF:
        checkProxies();
        break;
    default:
        break;
    }
}

void NamespaceInstaller::checkProxies() {
    if (!isSynchronised()) {
        return;
    }
    for (auto& [key, link] : proxyLinks_) {
        const auto& [name, table] = key;
        const bool isThere = links_.vrfTable(links_.index(name)) == table;
        const std::string off = isThere ? links_.obstacle(name) : "";
        if (off != std::exchange(link.told, off) && !off.empty()) {
            options_.report("VRF " + link.vrf.value() + ": " + std::string(name.name())
                            + " does not answer for IPv6 virtual addresses: " + off);
        }
    }
}

} // namespace Agent
