#pragma once

#include <bitset>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "agent/base/Watcher.h"
#include "agent/install/InstallLinks.h"
#include "agent/install/InstallTable.h"
#include "agent/linux/NetlinkSocket.h"
#include "agent/linux/NetworkNamespace.h"

namespace Agent {

/// Has what is wanted in the kernel of one network namespace, and nothing else under the agent's
/// protocol.
///
/// Requests and announcements go over one socket: the kernel works a request off while it is sent,
/// so what it did, refused and announced lies in the queue in one order. What the kernel drops
/// without a word (IPv4 routes of a link that goes down, changes its master or loses its last
/// address; proxy neighbours) is found by listing after whatever may have led to it, with a pause
/// behind each round of its own length at most.
///
/// No call blocks or works for much longer than a turn. Nothing that goes wrong is an error: it is
/// reported, and tried again when something changes.
///
/// One agent thread, no locks.
class NamespaceInstaller {
  public:
    using Report = RefusalReport::Report;

    struct Options {
        /// A named namespace; none is the calling thread's.
        std::optional<std::string> netns;
        std::uint8_t protocol = 0;
        Orb::Ptr<Orb::Clock> clock;
        Report report;
        InstallTable::IsReleased isReleased;
    };

    /// Begins at once; where the namespace cannot be opened it says so, and tries again.
    explicit NamespaceInstaller(Options options);
    NamespaceInstaller(const NamespaceInstaller&) = delete;
    NamespaceInstaller& operator=(const NamespaceInstaller&) = delete;
    ~NamespaceInstaller() = default;

    void want(const KernelSlot& slot, const InstallWant& want);
    void unwant(const KernelSlot& slot);
    /// How it stands with a slot that is wanted, in words: "installed", "waiting", ...
    std::string state(const KernelSlot& slot) const;

    /// Whether there is something that an earlier run left.
    bool hasLeftovers() const { return table_.hasLeftovers(); }
    /// What may go of that has changed.
    void reviewLeftovers();

    /// Removes everything of the protocol, at once, and until that time of the clock at most.
    /// Returns how many entries are left.
    std::size_t removeAll(double deadline);

  private:
    class Retry : public Orb::Clock::NotifieeConst {
      public:
        explicit Retry(NamespaceInstaller& owner) : owner_(owner) {}
        void onTimeMin() override { owner_.open(); }

      private:
        NamespaceInstaller& owner_;
    };
    using Listings = std::bitset<5>;
    static constexpr double never = Orb::Clock::never;
    struct ProxyLink {
        L3::VrfName vrf;
        std::size_t proxies = 0;
        std::string told; ///< what was said to be off
    };

    void open();
    void openSocket();
    void fail(const std::string& why);
    void wake() { watcher_ ? watcher_->wakeAt(0) : void(); }
    void work();
    double nextTime() const;
    bool step();
    bool afterDrain();
    void handle(const nlmsghdr& header);
    bool handleAnswer(const nlmsghdr& header);
    void handleEntry(const EntryMessage& message);
    void handleAnnounced(const nlmsghdr& header);
    void note(Listing listing) { needed_.set(static_cast<std::size_t>(listing)); }
    void noteRoutes();
    bool beginListing();
    void endListing(bool isWhole);
    void endRound();
    void sendRequests();
    bool isSynchronised() const { return known_.all(); }
    bool isIdle() const;
    void checkProxies();

    Options options_;
    InstallLinks links_;
    InstallTable table_;
    std::optional<Linux::NetlinkSocket> socket_; // none until the namespace could be opened
    std::optional<Watcher> watcher_;
    Retry retry_;
    double pause_;
    std::string failure_;

    std::uint32_t sequence_ = 0;
    std::vector<std::byte> message_;
    /// The requests that are not answered yet, by their sequence numbers from asked_'s on. The
    /// kernel says no more of those that it has done.
    std::vector<std::optional<InstallTable::Request>> asked_;
    std::uint32_t askedFrom_ = 0;
    std::vector<InstallTable::Request> requests_;
    std::size_t mostAtOnce_ = 1; ///< answers to so many requests fit the socket
    std::size_t batch_ = 1;

    Listings needed_;
    Listings known_; ///< were listed whole once
    Listings round_; ///< still to be listed in the present round
    std::optional<Listing> listing_;
    std::uint32_t listingSequence_ = 0;
    bool isInterrupted_ = false;
    bool isLost_ = false;
    bool hasChanged_ = false; ///< something that may let what was refused pass
    double roundBegan_ = 0;
    double listAt_ = 0;
    double retryAt_ = 0;
    double doubtedAt_ = never; ///< when what came into doubt is tried again
    double proxiesAt_ = 0;
    /// By name, and the table of the VRF device that it has to be in.
    std::map<std::pair<Lanx::IntfId, std::uint32_t>, ProxyLink> proxyLinks_;
};

} // namespace Agent
