#pragma once

#include "agent/base/FileDescriptor.h"
#include "agent/linux/NetlinkSocket.h"
#include "agent/linux/NetworkNamespace.h"
#include "agent/linux/RouteMessage.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Agent::Linux {

/// Links and addresses of one network namespace as the kernel tells of them: announcements of
/// changes on one socket, listings on another, so that neither waits for the other. Announcements
/// are subscribed to on construction. One listing at a time. One agent thread, no locks.
class RouteNetlink {
  public:
    struct Options {
        /// A named namespace; none is the calling thread's.
        std::optional<std::string> netns;
        /// Bytes asked for to hold announcements that were not read yet.
        int receiveBuffer = 4 << 20;
        bool ipv4 = true;
        bool ipv6 = true;
    };

    /// What to list: links if `family` is AF_UNSPEC, else that family's addresses; of every link or
    /// of the one of index `index`.
    struct ListingRequest {
        int family = 0;
        int index = 0;
    };

    enum class Announcements {
        /// The bound was reached; more may be waiting.
        More,
        /// All were read.
        Drained,
        /// Some were lost; those returned are not all. More may be waiting.
        Lost,
    };

    enum class Progress {
        /// More of the listing may come.
        More,
        /// Nothing more is there for now.
        Waiting,
        Complete,
        /// Complete, but what was listed changed meanwhile or a read failed, so entries may lack or
        /// stand twice.
        Interrupted,
        /// There is no such link, or the kernel knows no such family.
        Absent,
        /// The kernel failed; nothing more will come.
        Failed,
    };

    /// Throws SystemError or Orb::ParseError if the namespace or the sockets cannot be opened.
    explicit RouteNetlink(const Options& options);

    /// Readable (in the sense of poll) while announcements or parts of a listing are waiting.
    int fd() const { return poll_.get(); }
    /// Whether a listing can be of one link; otherwise its index does not matter.
    bool canListOne() const { return strict_; }

    /// Appends at most `limit` announcements to `messages`.
    Announcements readAnnouncements(std::vector<RouteMessage>& messages, std::size_t limit);

    /// Begins a listing. Returns whether the kernel took the request.
    bool beginListing(const ListingRequest& request);
    /// Reads one part of the listing and appends what it holds to `messages`.
    Progress readListing(std::vector<RouteMessage>& messages);
    /// Drops what is waiting though nothing was asked for.
    void dropUnasked();
    /// Why the last listing that failed, or could not begin, did.
    const std::string& failure() const { return failure_; }

  private:
    void openListingSocket();
    bool reopenListingSocket();
    std::optional<Progress> takeListed(const nlmsghdr& header, std::vector<RouteMessage>& messages);
    Progress finish(int error);
    void fail(std::string why);

    NetworkNamespace netns_;
    FileDescriptor poll_;
    std::optional<NetlinkSocket> announcements_;
    std::optional<NetlinkSocket> listings_;
    bool strict_ = false;
    ListingRequest request_;
    std::uint32_t sequence_ = 0;
    bool interrupted_ = false;
    /// A read of the listing failed, or was cut short.
    bool lost_ = false;
    std::string failure_;
};

} // namespace Agent::Linux
