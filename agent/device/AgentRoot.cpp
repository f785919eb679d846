#include "agent/device/AgentRoot.h"

namespace Agent {

AgentRoot::AgentRoot(const DeviceInputs& inputs)
    : root_(RootSm::RootSmIs({.entityManager = inputs.entityManager(),
                              .scheduler = inputs.scheduler(),
                              .viaSetConfig = inputs.viaSetConfig(),
                              .ipStatus = inputs.ipStatus(),
                              .ip6Status = inputs.ip6Status(),
                              .virtualIpStatus = inputs.virtualIpStatus(),
                              .virtualIp6Status = inputs.virtualIp6Status(),
                              .virtualIpAsReceiveRoute = inputs.virtualIpAsReceiveRoute(),
                              .nameToIdMapWrapper = inputs.vrfs().nameToIdMapWrapper(),
                              .allVrfStatusLocal = inputs.vrfs().allVrfStatusLocal(),
                              .allIntfStatusDir = inputs.allIntfStatusDir(),
                              .allIntfStatusLocalDir = inputs.allIntfStatusLocalDir(),
                              .allVrfRibReady = inputs.allVrfRibReady(),
                              .protoStatusDir = inputs.protoStatusDir(),
                              .grState = inputs.grState()})) {}

AgentRoot::~AgentRoot() { root_->handleDelete(); }

} // namespace Agent
