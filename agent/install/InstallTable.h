#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "agent/install/InstallLinks.h"
#include "agent/install/InstallWire.h"
#include "agent/install/KernelEntry.h"
#include "agent/install/RefusalReport.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// What the agent is to have in a kernel's slot.
struct InstallWant {
    L3::VrfName vrf;             ///< on whose behalf
    Lanx::IntfId link;           ///< that the entry goes through
    std::uint32_t linkTable = 0; ///< of the VRF device that the link has to be in, or 0 for none
    std::uint8_t type = 0;
    std::uint8_t scope = 0;

    friend bool operator==(const InstallWant&, const InstallWant&) = default;
};

/// What is wanted in the kernel of one namespace and what is there under the agent's protocol, and
/// so what is to be done about it. Asks nobody: it is told what the kernel says and tells which
/// requests are due.
///
/// What was never wanted is an earlier run's and stays until it is released.
class InstallTable {
  public:
    /// Whether what an earlier run left there may go.
    using IsReleased = std::function<bool(const KernelEntry&)>;

    struct Request {
        KernelSlot slot;
        KernelEntry entry;
        bool add = false;
    };

    InstallTable(const InstallLinks& links, RefusalReport::Report report, IsReleased isReleased);

    void want(const KernelSlot& slot, const InstallWant& want);
    void unwant(const KernelSlot& slot);
    /// Nothing is wanted any more, and all that is there may go.
    void clear();

    // What the kernel says.
    void entryIs(const KernelEntry& entry);
    void entryGone(const KernelEntry& entry);
    /// A proxy neighbour of somebody else's is there.
    void foreignProxyIs(const KernelEntry& entry);
    void refused(const Request& request, int code, const std::string& words);
    /// A request was not refused. Of proxy neighbours the kernel says no more.
    void done(const Request& request);

    /// What of the kinds is not told of until the listing ends is gone.
    void beginListing() { ++generation_; }
    void endListing(Listing listing);

    /// Whether places have come into doubt since the last call: routes are to be listed, and these
    /// places tried again after a while.
    bool takeDoubt() { return std::exchange(isInDoubt_, false); }
    void retryDoubted();

    /// Looks at everything again; at what was refused too if `refusedToo`.
    void lookAgain(bool refusedToo);

    /// Appends requests that are due, at most about `limit`. They are asked for once, until the
    /// kernel has answered or something changes.
    void takeRequests(std::vector<Request>& requests, std::size_t limit);
    bool hasRequests() const { return !queue_.empty(); }
    /// Whether the kernel refused something that is wanted, or is to go.
    bool hasRefused() const { return refused_ > 0; }
    /// Whether there is something that an earlier run left.
    bool hasLeftovers() const { return leftovers_ > 0; }
    bool hasProxies() const { return proxies_ > 0; }
    std::size_t entries() const { return entries_; }

    /// How it stands with a slot that is wanted, in words: "installed", "waiting", ...
    std::string state(const KernelSlot& slot) const;
    bool isInstalled(const KernelSlot& slot) const;

  private:
    struct Present {
        KernelEntry entry;
        unsigned generation = 0;
    };
    struct Refusal {
        RefusalReport::Cause* cause;
        L3::VrfName vrf;
        Lanx::IntfId link;
    };
    /// The kernel said that something is in the place: perhaps the agent's own, and overlooked, or
    /// its own for a moment, as of a link that moves.
    enum class Doubt : std::uint8_t { none, waits, tried };
    struct Place {
        std::optional<InstallWant> want;
        std::vector<Present> present{};
        std::optional<Refusal> refusal{};
        L3::VrfName vrf{};       ///< on whose behalf it was wanted last
        bool isClaimed = false;  ///< this run has wanted it
        bool isLeftover = false; ///< an earlier run's, and not released
        bool isQueued = false;
        bool isAsked = false; ///< requests for it are not answered yet
        Doubt doubt = Doubt::none;
    };
    using Places = std::unordered_map<KernelSlot, Place, Orb::HashFunction<KernelSlot>>;

    std::optional<KernelSlot> slotOf(const KernelEntry& entry) const;
    std::optional<KernelEntry> wanted(const KernelSlot& slot, const Place& place) const;
    void look(const KernelSlot& slot, Place& place);
    void appendRequests(const KernelSlot& slot, Place& place, std::vector<Request>& requests);
    bool mayGo(const Place& place, const KernelEntry& entry) const;
    void dropForeignProxies();
    void refuse(const KernelSlot& slot, Place& place, const std::string& words, const char* verb);
    void forgive(Place& place);
    void markLeftover(Place& place, bool isLeftover);
    void eraseIfEmpty(Places::iterator place);

    const InstallLinks& links_;
    RefusalReport report_;
    IsReleased isReleased_;
    Places places_;
    /// Proxy neighbours of other programs, with the listing that told of them last.
    std::unordered_map<KernelSlot, unsigned, Orb::HashFunction<KernelSlot>> foreignProxies_;
    std::vector<KernelSlot> queue_;
    unsigned generation_ = 1;
    std::size_t refused_ = 0;
    std::size_t leftovers_ = 0;
    std::size_t proxies_ = 0; // slots of proxy neighbours
    std::size_t entries_ = 0;
    bool isClearing_ = false;
    bool isInDoubt_ = false;
};

} // namespace Agent
