#pragma once

#include "agent/base/FileDescriptor.h"

#include <cstddef>
#include <linux/netlink.h>
#include <span>
#include <vector>

namespace Agent::Linux {

/// A route netlink socket of the namespace of the thread that opens it. Never blocks, takes bytes
/// from the kernel only, and tells when the kernel had to drop some. One agent thread, no locks.
class NetlinkSocket {
  public:
    enum class Reading {
        /// messages() holds what was read.
        Data,
        /// Nothing is waiting.
        Empty,
        /// Messages were lost: the socket overran, or the read failed or was cut short. What is
        /// still waiting can be read.
        Lost,
    };

    /// Throws SystemError.
    NetlinkSocket();

    /// Asks for a receive buffer of `bytes`; the kernel sets the bounds.
    void resizeBuffer(int bytes);
    /// Joins the multicast group RTNLGRP_*. Throws SystemError.
    void subscribe(int group);
    /// Asks the kernel to check requests strictly and so to honour what they select. Returns
    /// whether it can.
    bool checkStrictly();

    /// Asks the kernel to say in words why it refuses a request, and not to repeat the request.
    void askForWords();
    /// Bytes that the kernel lets wait in the receive buffer; it counts its own overhead too.
    int bufferSize() const;

    int fd() const { return file_.get(); }
    /// Returns whether the kernel took the request.
    bool send(std::span<const std::byte> request);
    Reading receive();

    /// Calls `visit` with each message last read that lies whole in the buffer.
    template <class Visit>
    void forEachMessage(Visit&& visit) const {
        std::size_t rest = size_;
        const std::byte* at = buffer_.data();
        while (rest >= sizeof(nlmsghdr)) {
            const auto& header = *reinterpret_cast<const nlmsghdr*>(at);
            if (header.nlmsg_len < sizeof(nlmsghdr) || header.nlmsg_len > rest) {
                return;
            }
            visit(header);
            std::size_t step = NLMSG_ALIGN(header.nlmsg_len);
            if (step >= rest) {
                return;
            }
            at += step;
            rest -= step;
        }
    }

  private:
    FileDescriptor file_;
    std::vector<std::byte> buffer_;
    std::size_t size_ = 0;
};

} // namespace Agent::Linux
