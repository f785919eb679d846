#pragma once

#include "directnet/backlog/RoomWaiter.h"
#include "directnet/model/FunctionName.h"
#include "directnet/model/Trace.h"
#include "directnet/root/AddressContributions.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

/// The logic of IpIntfSm and Ip6IntfSm, which turn the addresses of one interface into
/// contributions to its VRF. `Sm` derives from this and names what differs between the families:
///
///   applyStatus()        adds what the interface's status has in use
///   withdrawStatus()     withdraws what it lists
///   yieldsNothing(a)     whether an address is none
///   updateBcastRoute()   where the family has broadcasts
template <typename Sm, typename Family>
class AddressMachine {
  public:
    using AddrWithMask = typename Family::AddrWithMask;

    void handleInitialized() {
        if (self().initialized()) {
            DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 8, self(), " already initialized");
            return;
        }
        self().initializedIs(true);
        self().applyStatus();
    }

    void handleIntfDeletion() {
        DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 8, "handleIntfDeletion",
                           " intf=", self().intfId());
        self().withdrawStatus();
        // The status may have moved on from what was added, without a word that was still heard.
        for (const AddrWithMask& address : Orb::keysOf(contributions_.held())) {
            const auto* held = contributions_.held().find(address);
            if (held != nullptr && !held->stays) {
                updateIntfIdsByPrefix(address, true);
            }
        }
    }

    /// Adds or withdraws all that one address contributes.
    void updateIntfIdsByPrefix(const AddrWithMask& address, bool withdraw) {
        DIRECTNET_TRACE_IN(DIRECTNET_THIS_FUNCTION, 8, "updateIntfIdsByPrefix",
                           " intf=", self().intfId(), " addr=", address, " withdraw=", withdraw);
        if (Sm::yieldsNothing(address)) {
            return;
        }
        if (withdraw) {
            contributions_.withdraw(address);
            updateBroadcasts(address, true);
            contributions_.giveReferencesBack(address);
        } else if (const IntfViaSetKey viaSets = viaSetKeyOrWait(); !!viaSets) {
            contributions_.add(address, viaSets);
            updateBroadcasts(address, false);
            contributions_.takeReference(address);
        }
    }

    friend std::ostream& operator<<(std::ostream& out, const Sm& sm) {
        return out << sm.vrfName() << ' ' << sm.intfId();
    }

  protected:
    using OrbSelf = Sm;
    static constexpr const char* directNetTraceUnit = "DirectNet";

    template <typename Arguments>
    explicit AddressMachine(const Arguments& arguments)
        : contributions_(arguments.intfId, arguments.intfViaSetConfig, arguments.intfBacklog) {}

    /// The interface's via sets, made if there are none. Empty while there is no room for its via:
    /// handleRoom() is called when there may be.
    IntfViaSetKey viaSetKeyOrWait() {
        const IntfViaSetKey viaSets = contributions_.viaSetKey();
        if (!viaSets) {
            room_.await(self(), contributions_.vias(), self().intfBacklog());
        }
        return viaSets;
    }

    bool waitsForRoom() const { return room_.waits(); }

    AddressContributions<Family>& contributions() { return contributions_; }

  private:
    Sm& self() { return static_cast<Sm&>(*this); }

    void updateBroadcasts(const AddrWithMask& address, bool withdraw) {
        if constexpr (Family::hasBroadcasts) {
            self().updateBcastRoute(address, withdraw);
        }
    }

    AddressContributions<Family> contributions_;
    RoomWaiter<Sm> room_;
};

} // namespace Routing::DirectNet
