#pragma once

#include <utility>

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/RouteLeakedFromVrf.h"

/// How a machine follows a leak status: one reactor on the status for the source VRFs that come and
/// go, and one on each of these for its leaks. `Base` is the kind of reactor, an input reactor or a
/// plain one.
namespace Routing::DirectNet {

/// Has the owner's `handleSourceVrf(status, sourceVrfId)` look whether the source VRF leaks.
template <typename Base>
class LeakStatusReactor : public Base {
  public:
    using Base::Base;

    void onAttribute(Orb::AttributeId id, const void* key) override {
        if (id == Base::Watched::leakedRouteBySourceVrfAttribute) {
            this->owner()->handleSourceVrf(*this->notifier(),
                                           Orb::keyAs<RouteLeakedFromVrf::VrfId>(key));
        }
    }
};

/// Has the owner's `handleLeakedPrefix(leaks, leakedPrefix)` look at one leak.
template <typename Base>
class SourceVrfReactor : public Base {
  public:
    SourceVrfReactor(typename Base::Owner* owner, Orb::Ptr<const RouteLeakedFromVrf> leaks)
        : Base(owner) {
        this->attach(std::move(leaks));
    }

    void onAttribute(Orb::AttributeId id, const void* key) override {
        if (id == RouteLeakedFromVrf::destVrfIdAttribute) {
            this->owner()->handleLeakedPrefix(*this->notifier(), Orb::keyAs<LeakedPrefix>(key));
        }
    }
};

} // namespace Routing::DirectNet
