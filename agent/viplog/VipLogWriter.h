#pragma once

#include <optional>
#include <string>

#include "directnet/virtualip/AllVrfVirtualIpStatus.h"
#include "platform/attributelog/AttributeLogSink.h"
#include "platform/attributelog/AttributeLogWriter.h"
#include "platform/attributelog/LanxAttributeLogForm.h"

namespace Agent {

/// Streams a root's tables of virtual addresses, of both families, to a file or to whoever reads
/// the pipe of that name. The agent never waits for the reader.
class VipLogWriter {
  public:
    using Tables4 = Routing::DirectNet::Ipv4::AllVrfVirtualIpStatus;
    using Tables6 = Routing::DirectNet::Ipv6::AllVrfVirtualIpStatus;

    /// Opens the file; a pipe must have its reader by then. There must be an activity manager,
    /// which must outlive this. Throws FailureError, also for an ordinary file that another agent
    /// writes.
    explicit VipLogWriter(std::string file);

    /// Logs the present state, and from now on every change. To be called once.
    void attach(const Orb::Ptr<Tables4>& tables4, const Orb::Ptr<Tables6>& tables6);

    /// Why the log will be incomplete; empty if nothing has failed.
    std::string failure() const;

    /// Ends the log and waits until it is written; a reader that takes nothing for a while is
    /// given up. Throws FailureError when not all of the log was written, whenever that happened.
    void finish();

  private:
    std::string file_;
    Orb::AttributeLogSink sink_;
    std::optional<Orb::AttributeLogWriter<Tables4, Tables6>> writer_;
};

} // namespace Agent
