#pragma once

#include "agent/device/DeviceInputs.h"
#include "directnet/root/RootSm.h"

namespace Agent {

/// The library's root, made from a device's inputs and stopped when it goes. The inputs and the
/// activity manager must outlive it.
class AgentRoot {
  public:
    using RootSm = Routing::DirectNet::RootSm;

    explicit AgentRoot(const DeviceInputs& inputs);
    AgentRoot(const AgentRoot&) = delete;
    AgentRoot& operator=(const AgentRoot&) = delete;
    ~AgentRoot();

    const RootSm& operator*() const { return *root_; }
    const RootSm* operator->() const { return root_.get(); }

  private:
    Orb::Ptr<RootSm> root_;
};

} // namespace Agent
