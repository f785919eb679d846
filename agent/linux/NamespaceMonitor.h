#pragma once

#include "agent/linux/LinkSet.h"
#include "agent/linux/ListingRound.h"
#include "agent/linux/MonotonicClock.h"
#include "agent/linux/NamespaceView.h"
#include "agent/linux/RouteNetlink.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Agent::Linux {

/// Follows the links and addresses of one network namespace and tells them as merge patches on the
/// device document.
///
/// An announcement is applied at once if it tells the whole story. Otherwise its link is marked and
/// listed anew when the burst has been read, or the whole namespace if many are marked or
/// announcements were lost. Announcements about links being listed, or listed since the queue was
/// last empty, may be older than the listing; they are not applied but mark their links again. So
/// the view only ever holds states the kernel was in, it catches up when changes pause, and while
/// they do not it still moves on with every round.
///
/// A round is followed by a pause of its own length, at most, so that changes without end cost at
/// most about half the thread. No call blocks or works off more than a bounded batch.
///
/// One agent thread, no locks. Not movable: the round in progress points into it.
class NamespaceMonitor {
  public:
    struct Options {
        /// The namespace's key in the document's "kernel" section.
        Lanx::NamespaceName netns = Lanx::NamespaceName::defaultNamespace();
        /// The key of its addresses in the sections "ipv4" and "ipv6".
        L3::VrfName vrf = L3::VrfName::defaultVrf();
        /// Whether VRF devices have addresses of their own VRFs (see NamespaceView).
        bool vrfDevices = true;
        RouteNetlink::Options netlink;
        MonotonicClock clock = steadySeconds;
    };

    /// Subscribes to announcements. Throws SystemError or Orb::ParseError as RouteNetlink does.
    explicit NamespaceMonitor(Options options);
    NamespaceMonitor(const NamespaceMonitor&) = delete;
    NamespaceMonitor& operator=(const NamespaceMonitor&) = delete;

    /// Begins the first round.
    void start();

    /// Watch this for being readable and call onReadable() then.
    int fd() const { return netlink_.fd(); }
    /// When onReadable() is to be called though the descriptor is not readable, in seconds of the
    /// clock handed in; infinity if never. May be in the past.
    double retryAt() const;
    /// Handles a bounded batch of what is waiting, and what is due.
    void onReadable();

    /// Whether the view has held the whole namespace. Until then there is nothing to tell.
    bool isSynchronised() const { return synchronised_; }
    /// Whether nothing is known to be outstanding: the view is what a fresh start would give.
    bool isSettled() const;
    /// Why the last round failed; empty if it did not. A round that failed is repeated.
    const std::string& failure() const { return failure_; }

    /// How often announcements were lost, and how often links were listed behind the first time.
    struct Counts {
        std::uint64_t overruns = 0;
        std::uint64_t relistings = 0;

        Counts& operator+=(const Counts& other) {
            overruns += other.overruns;
            relistings += other.relistings;
            return *this;
        }
    };
    const Counts& counts() const { return counts_; }

    /// What the kernel has, as far as it is known.
    NamespaceView& view() { return view_; }
    const NamespaceView& view() const { return view_; }

    /// The merge patch on the device document since the last one taken; an empty one if nothing
    /// has changed.
    DevicePatch takePatch() { return view_.takePatch(); }
    /// The merge patch that takes everything told back. For a namespace that has gone; the monitor
    /// is of no further use.
    DevicePatch withdraw();

  private:
    bool readAnnouncements();
    void note(const RouteMessage& message);
    void mark(int index);
    void markAll();
    bool isDue(bool drained) const;
    void beginRound();
    void advanceRound();
    void endRound();
    void abandonRound();

    Options options_;
    NamespaceView view_;
    RouteNetlink netlink_;
    std::vector<RouteMessage> messages_;

    /// To be listed.
    LinkSet marked_;
    /// When the first of the present marks was made.
    double markedAt_ = 0;

    std::optional<ListingRound> round_;
    /// The round can be read on without waiting for the descriptor.
    bool roundReady_ = false;
    double roundBegan_ = 0;
    double pauseUntil_ = 0;
    std::string failure_;
    /// Seconds until a round that fails next is repeated.
    double failurePause_;
    /// Being listed, or listed while older announcements may still be waiting.
    LinkSet recent_;

    /// Announcements were lost, and the kernel drops all further ones until the queue was empty.
    bool overrun_ = false;
    Counts counts_;
    bool synchronised_ = false;
};

} // namespace Agent::Linux
