#pragma once

#include "platform/lanx/IpGenAddrWithMask.h"

namespace Routing::DirectNet {

/// Orders interface addresses by family, then the 16 bytes of the address, then mask length: a
/// plain total order that knows nothing of subnets.
struct IpGenAddrWithMaskCompare {
    bool operator()(const Lanx::IpGenAddrWithMask& left,
                    const Lanx::IpGenAddrWithMask& right) const {
        if (left.af() != right.af()) {
            return left.af() < right.af();
        }
        if (left.addr() != right.addr()) {
            return Lanx::Ip6Addr(left.addr().bytes()) < Lanx::Ip6Addr(right.addr().bytes());
        }
        return left.len() < right.len();
    }
};

} // namespace Routing::DirectNet
