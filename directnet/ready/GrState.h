#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// How the agent was started: during a graceful restart, readiness is not declared before the
/// hosting agent lets its verification start.
class GrState : public Orb::Entity {
    ORB_ENTITY(GrState, "Routing::DirectNet::GrState")
    ORB_CONSTRUCTOR((bool, gracefulRestart))
    ORB_ATTRIBUTE(259, bool, startReadyVerification)

  public:
    explicit GrState(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Routing::DirectNet
