#pragma once

#include "agent/linux/LinkSet.h"
#include "agent/linux/NamespaceView.h"
#include "agent/linux/RouteMessage.h"
#include "agent/linux/RouteNetlink.h"

#include <cstddef>
#include <vector>

namespace Agent::Linux {

/// One look at the kernel: lists the whole namespace, or a few links, and then makes the view what
/// was seen. The view does not change before everything was listed.
///
/// A listing that failed, or that changes interrupted, is repeated a few times. Failure after
/// failure ends the round. Changes without end must not keep the agent from learning anything: then
/// what was listed is used and the round is not clean.
class ListingRound {
  public:
    enum class State { Running, Waiting, Done, Failed };

    /// A round over `links`, which is not empty. Lists the address families asked for.
    ListingRound(RouteNetlink& netlink, LinkSet links, bool ipv4, bool ipv6);

    /// Reads one part. Waiting: nothing more is there for now. Failed: the round is over, what it
    /// has read is worth nothing.
    State advance();

    const LinkSet& links() const { return links_; }
    /// False if changes interrupted the last attempt of a listing too.
    bool isClean() const { return clean_; }

    /// After Done: makes `view` what was listed.
    void applyTo(NamespaceView& view) const;

  private:
    void addRequests(int index, bool ipv4, bool ipv6);
    void keepListed();
    State repeatOr(State end);
    State next();

    RouteNetlink& netlink_;
    LinkSet links_;
    std::vector<RouteNetlink::ListingRequest> requests_;
    std::size_t current_ = 0;
    bool begun_ = false;
    int attempt_ = 0;
    bool clean_ = true;
    std::vector<RouteMessage> listed_;
    ListedLinks kept_;
};

} // namespace Agent::Linux
