#pragma once

#include <memory>
#include <ostream>

#include "agent/base/Colour.h"
#include "agent/viplog/VipLogReader.h"

namespace Agent {

/// Prints a line for each change of a reader's tables while it reads on: a table or a virtual
/// address comes (+), changes (~) or goes (-). What the tables hold at the start is not printed.
/// The reader must outlive the printer.
class VipChangePrinter {
  public:
    /// Prints JSON objects, or text for people in colour.
    VipChangePrinter(std::ostream& out, bool json, Colour colour, const VipLogReader& tables);
    VipChangePrinter(const VipChangePrinter&) = delete;
    VipChangePrinter& operator=(const VipChangePrinter&) = delete;
    ~VipChangePrinter();

  private:
    template <typename Tables, typename Table, typename VirtualIp>
    class Family;
    using Ipv4 = Family<VipLogReader::Tables4, Routing::DirectNet::Ipv4::VrfVirtualIpStatus,
                        VirtualIp::VirtualIpIntfStatus>;
    using Ipv6 = Family<VipLogReader::Tables6, Routing::DirectNet::Ipv6::VrfVirtualIpStatus,
                        VirtualIp::VirtualIp6IntfStatus>;

    std::unique_ptr<Ipv4> ipv4_;
    std::unique_ptr<Ipv6> ipv6_;
};

} // namespace Agent
