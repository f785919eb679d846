#pragma once

#include <streambuf>
#include <string>

#include "directnet/virtualip/AllVrfVirtualIpStatus.h"
#include "platform/lanx/AttributeLogForm.h"
#include "platform/orb/AttributeLogReplay.h"

namespace Agent {

/// Follows the log of a VipLogWriter and holds the same tables.
class VipLogReader {
  public:
    using Tables4 = Routing::DirectNet::Ipv4::AllVrfVirtualIpStatus;
    using Tables6 = Routing::DirectNet::Ipv6::AllVrfVirtualIpStatus;

    /// `name` is what messages call the log.
    explicit VipLogReader(std::string name);

    const Tables4& tables4() const { return *tables4_; }
    const Tables6& tables6() const { return *tables6_; }

    /// Reads to the end of the log, as it is written. Throws BadInputError for a log that is not
    /// good or has no end.
    void read(std::streambuf& log);

  private:
    std::string name_;
    Orb::Ptr<Tables4> tables4_ = Orb::makePtr<Tables4>();
    Orb::Ptr<Tables6> tables6_ = Orb::makePtr<Tables6>();
    Orb::AttributeLogReplay<Tables4, Tables6> replay_;
};

} // namespace Agent
