#pragma once

#include <string>
#include <string_view>

#include "directnet/virtualip/AllVrfVirtualIpStatus.h"
#include "platform/attributelog/AttributeLogReplay.h"
#include "platform/attributelog/LanxAttributeLogForm.h"

namespace Agent {

/// Follows the log of a VipLogWriter and holds the same tables. What it has read stays after an
/// error.
class VipLogReader {
  public:
    using Tables4 = Routing::DirectNet::Ipv4::AllVrfVirtualIpStatus;
    using Tables6 = Routing::DirectNet::Ipv6::AllVrfVirtualIpStatus;

    /// `name` is what messages call the log.
    explicit VipLogReader(std::string name);

    const Tables4& tables4() const { return *tables4_; }
    const Tables6& tables6() const { return *tables6_; }

    /// The next bytes of the log. Throws BadInputError for a log that is not good.
    void feed(std::string_view bytes);
    /// The same, but stops where the state at the start is complete and returns the bytes behind.
    std::string_view feedToState(std::string_view bytes);
    /// There are no more bytes. Throws BadInputError when the log has no end.
    void finish() const;

    /// Whether the tables are as the writer's were at some moment.
    bool hasState() const { return replay_.hasState(); }
    /// Whether the log has told anything of the tables.
    bool hasAnything() const;

  private:
    std::string name_;
    Orb::Ptr<Tables4> tables4_ = Orb::makePtr<Tables4>();
    Orb::Ptr<Tables6> tables6_ = Orb::makePtr<Tables6>();
    Orb::AttributeLogReplay<Tables4, Tables6> replay_;
};

} // namespace Agent
