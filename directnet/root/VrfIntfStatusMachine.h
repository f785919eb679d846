#pragma once

#include "directnet/backlog/IntfBacklog.h"
#include "directnet/model/Trace.h"
#include "directnet/ready/GrState.h"
#include "platform/orb/object/Reactor.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet {

/// The logic of VrfIpIntfStatusSm and VrfIp6IntfStatusSm: owns the family's interface-status
/// machine exactly while the VRF has a status of that family, and declares the VRF's routes of the
/// family ready once, when its backlog has been drained and no graceful restart holds it back.
///
/// `Sm` derives from this and names what differs between the families.
template <typename Sm>
class VrfIntfStatusMachine {
  public:
    void handleInitialized() {
        if (self().initialized()) {
            DIRECTNET_TRACE(8, self(), " already initialized");
            return;
        }
        DIRECTNET_TRACE(8, self());
        self().initializedIs(true);
        handleVrfIntfStatus(self().vrfName());
        maybeSetRoutesReady();
    }

    /// Called at start, whenever a drain has emptied the backlog, and when readiness may be
    /// verified. Interface changes are not looked at: they fill the backlog, which is drained.
    void maybeSetRoutesReady() {
        if (!self().initialized()) {
            return;
        }
        if (self().grState()->gracefulRestart() && !self().grState()->startReadyVerification()) {
            DIRECTNET_TRACE(8, "Returning without setting ready for ", Sm::version,
                            " connected routes as startReadyVerification not set yet for vrf : ",
                            self().vrfName());
            return;
        }
        if (self().childIsStarting() || !self().intfBacklog()->backlog().empty()
            || self().intfBacklog()->waitingForRoom() > 0) {
            DIRECTNET_TRACE(
                8, "Returning without setting ready for ", Sm::version,
                " connected routes as intfBacklog not empty yet for vrf: ", self().vrfName());
            return;
        }
        DIRECTNET_TRACE(7, "Backlog empty count : ", self().intfBacklog()->backlogEmpty());
        DIRECTNET_DUALLOG(0, "Setting ready for ", Sm::version,
                          " connected routes for vrf : ", self().vrfName());
        self().doSetReady();
    }

  protected:
    template <typename Watched, Orb::AttributeId collectionId>
    class OrbStatus : public Orb::InputReactor<Sm, Watched> {
      public:
        using Orb::InputReactor<Sm, Watched>::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override {
            if (id == collectionId) {
                this->owner()->handleVrfIntfStatus(Orb::keyAs<L3::VrfName>(key));
            }
        }
    };

    /// What `ReactorBase` watches decides about readiness with the attribute of that number.
    template <typename ReactorBase, Orb::AttributeId attribute>
    class OrbReadiness : public ReactorBase {
      public:
        explicit OrbReadiness(Sm* sm) : ReactorBase(sm, attribute) {}
        void onAttribute(Orb::AttributeId id, const void*) override {
            if (id == attribute) {
                this->owner()->maybeSetRoutesReady();
            }
        }
        void notifierIs(Orb::Ptr<const typename ReactorBase::Watched> watched) override {
            ReactorBase::notifierIs(std::move(watched));
            this->owner()->maybeSetRoutesReady();
        }
    };
    using OrbIntfBacklog = OrbReadiness<Orb::Reactor<Sm, IntfBacklog>, IntfBacklog::backlogEmptyId>;
    using OrbGrState =
        OrbReadiness<Orb::InputReactor<Sm, GrState>, GrState::startReadyVerificationId>;

    void handleVrfIntfStatus(const L3::VrfName& changed) {
        if (!self().initialized() || changed != self().vrfName()) {
            return;
        }
        if (!changed) {
            DIRECTNET_TRACE_IN(Sm::handlerName, 8, Sm::emptyNameText);
            return;
        }
        if (self().hasStatus()) {
            DIRECTNET_TRACE_IN(Sm::handlerName, 8, Sm::createText);
            DIRECTNET_RINGLOG_IN(Sm::handlerName, Sm::ringCreateText, changed);
            self().doCreateChild();
        } else {
            DIRECTNET_TRACE_IN(Sm::handlerName, 8, Sm::deleteText);
            DIRECTNET_RINGLOG_IN(Sm::handlerName, Sm::ringDeleteText, changed);
            self().doDeleteChild();
        }
    }

  private:
    static constexpr const char* directNetTraceUnit = "DirectNet";

    Sm& self() { return static_cast<Sm&>(*this); }
    const Sm& self() const { return static_cast<const Sm&>(*this); }
};

} // namespace Routing::DirectNet
