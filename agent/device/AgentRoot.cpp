#include "agent/device/AgentRoot.h"

namespace Agent {

AgentRoot::AgentRoot(const DeviceInputs& inputs)
    : root_(RootSm::RootSmIs(inputs.entityManager(), inputs.scheduler(), inputs.viaSetConfig(),
                             inputs.ipStatus(), inputs.ip6Status(), inputs.virtualIpStatus(),
                             inputs.virtualIp6Status(), inputs.virtualIpAsReceiveRoute(),
                             inputs.vrfs().nameToIdMapWrapper(), inputs.vrfs().allVrfStatusLocal(),
                             inputs.allIntfStatusDir(), inputs.allIntfStatusLocalDir(),
                             inputs.allVrfRibReady(), inputs.protoStatusDir(), inputs.grState())) {}

AgentRoot::~AgentRoot() { root_->handleDelete(); }

} // namespace Agent
