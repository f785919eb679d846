#pragma once

#include <string>
#include <string_view>

#include "directnet/virtualip/AllVrfVirtualIpStatus.h"
#include "platform/attributelog/AttributeLogReplay.h"
#include "platform/attributelog/LanxAttributeLogForm.h"

namespace Agent {

/// Follows the log of a VipLogWriter and holds the same tables. After an error it keeps what it has
/// read.
class VipLogReader {
  public:
    using Tables4 = Routing::DirectNet::Ipv4::AllVrfVirtualIpStatus;
    using Tables6 = Routing::DirectNet::Ipv6::AllVrfVirtualIpStatus;

    /// `name` is what messages call the log.
    explicit VipLogReader(std::string name);

    const Tables4& tables4() const { return *tables4_; }
    const Tables6& tables6() const { return *tables6_; }

    /// Reads the next bytes of the log. Throws BadInputError for bytes that no writer writes.
    void feed(std::string_view bytes);
    /// The same, but stops where the state at the start is complete and returns the bytes behind.
    std::string_view feedToState(std::string_view bytes);
    /// Must be called after the last bytes. Throws BadInputError when the log ends early.
    void finish() const;

    /// Whether the log's first complete state has been read.
    bool hasState() const { return replay_.hasState(); }
    /// Whether any part of that state has been read.
    bool hasAnything() const;

  private:
    std::string name_;
    Orb::Ptr<Tables4> tables4_ = Orb::makePtr<Tables4>();
    Orb::Ptr<Tables6> tables6_ = Orb::makePtr<Tables6>();
    Orb::AttributeLogReplay<Tables4, Tables6> replay_;
};

} // namespace Agent
