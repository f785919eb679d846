#include "agent/linux/ListingRound.h"

#include <sys/socket.h>
#include <utility>

namespace Agent::Linux {

namespace {

constexpr int attempts = 3;

} // namespace

ListingRound::ListingRound(RouteNetlink& netlink, LinkSet links, bool ipv4, bool ipv6)
    : netlink_(netlink), links_(std::move(links)) {
    if (links_.isAll()) {
        addRequests(0, ipv4, ipv6);
    }
    for (int index : links_.indexes()) {
        addRequests(index, ipv4, ipv6);
    }
}

void ListingRound::addRequests(int index, bool ipv4, bool ipv6) {
    // The link comes first: its listing waits until the change that was just announced is through,
    // while addresses are listed even in the midst of one.
    requests_.push_back({AF_UNSPEC, index});
    if (ipv4) {
        requests_.push_back({AF_INET, index});
    }
    if (ipv6) {
        requests_.push_back({AF_INET6, index});
    }
}

ListingRound::State ListingRound::advance() {
    if (!begun_) {
        listed_.clear();
        begun_ = netlink_.beginListing(requests_[current_]);
        return begun_ ? State::Running : repeatOr(State::Failed);
    }
    switch (netlink_.readListing(listed_)) {
    case RouteNetlink::Progress::More:
        return State::Running;
    case RouteNetlink::Progress::Waiting:
        return State::Waiting;
    case RouteNetlink::Progress::Failed:
        return repeatOr(State::Failed);
    case RouteNetlink::Progress::Interrupted:
        if (repeatOr(State::Done) == State::Running) {
            return State::Running;
        }
        clean_ = false;
        break;
    case RouteNetlink::Progress::Complete:
    case RouteNetlink::Progress::Absent:
        break;
    }
    return next();
}

/// Has the present listing begin anew, or returns `end` if that was done often enough.
ListingRound::State ListingRound::repeatOr(State end) {
    begun_ = false;
    return ++attempt_ < attempts ? State::Running : end;
}

ListingRound::State ListingRound::next() {
    keepListed();
    begun_ = false;
    attempt_ = 0;
    ++current_;
    return current_ == requests_.size() ? State::Done : State::Running;
}

void ListingRound::keepListed() {
    for (const RouteMessage& message : listed_) {
        std::visit([this](const auto& known) { kept_.add(known); }, message);
    }
    listed_.clear();
}

void ListingRound::applyTo(NamespaceView& view) const {
    if (links_.isAll()) {
        view.replaceAll(kept_);
        return;
    }
    for (int index : links_.indexes()) {
        view.replaceOne(index, kept_);
    }
}

} // namespace Agent::Linux
