#pragma once

#include "directnet/model/Trace.h"
#include "directnet/root/KernelIntfStatus.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/object/Reactor.h"

namespace Routing::DirectNet {

/// The logic of IpIntfStatusSm and Ip6IntfStatusSm: keeps one address machine per interface that
/// both has an address status in the VRF and is present in the kernel.
///
/// `Sm` derives from this and names what differs between the families: whether an interface has a
/// status and a machine, how a machine is made and deleted, and the trace texts.
template <typename Sm>
class IntfStatusMachine {
  public:
    void handleIntfId(Lanx::IntfId intfId) {
        bool due = false;
        if (!self().hasIntfStatus(intfId)) {
            DIRECTNET_TRACE(8, self(), ' ', intfId, Sm::absentText);
        } else if (!self().kernelIntfStatus()->kernelIntfPresent(intfId)) {
            DIRECTNET_TRACE(8, self(), ' ', intfId, " not present in kernelIntfStatus");
        } else {
            DIRECTNET_TRACE(8, self(), ' ', intfId, " all conditions met");
            due = true;
        }
        if (due && self().hasIntfSm(intfId)) {
            DIRECTNET_TRACE(8, self(), ' ', intfId, " SM exists");
        } else if (due) {
            // One of a status that went and came back while nobody could look is not this one's.
            self().doDeleteIntfSm(intfId);
            DIRECTNET_TRACE(7, self(), ' ', intfId, " create SM");
            DIRECTNET_RINGLOG(intfId, Sm::createText);
            self().doCreateIntfSm(intfId);
        } else if (self().hasAnyIntfSm(intfId)) {
            DIRECTNET_TRACE(7, self(), ' ', intfId, " delete SM");
            DIRECTNET_RINGLOG(intfId, Sm::deleteText);
            self().doDeleteIntfSm(intfId);
        } else {
            DIRECTNET_TRACE(8, self(), ' ', intfId, " no SM");
        }
    }

    void handleKernelIntf() {
        Orb::forEachKey(kernelIntfDir()->intfStatusAndDeviceName(),
                        [this](Lanx::IntfId intfId) { handleIntfId(intfId); });
    }

    const Orb::Ptr<const Interface::DeviceIntfStatusDir>& kernelIntfDir() const {
        return self().kernelIntfStatus()->kernelIntfStatusDir();
    }

  protected:
    class OrbKernelIntfDir : public Orb::InputReactor<Sm, Interface::DeviceIntfStatusDir> {
      public:
        using Orb::InputReactor<Sm, Interface::DeviceIntfStatusDir>::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override {
            if (id == Interface::DeviceIntfStatusDir::intfStatusAndDeviceNameId) {
                this->owner()->handleIntfId(Orb::keyAs<Lanx::IntfId>(key));
            }
        }
    };

    /// Watches the VRF's interface statuses, in the collection of that number.
    template <typename Watched, Orb::AttributeId collectionId>
    class OrbIntfStatuses : public Orb::InputReactor<Sm, Watched> {
      public:
        using Orb::InputReactor<Sm, Watched>::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override {
            if (id == collectionId) {
                this->owner()->handleIntfId(Orb::keyAs<Lanx::IntfId>(key));
            }
        }
    };

    template <typename Statuses>
    void handleEvery(const Statuses& statuses) {
        for (const auto* status = statuses.first(); status != nullptr;) {
            const Lanx::IntfId intfId = (*status)->intfId();
            handleIntfId(intfId);
            status = statuses.after(intfId);
        }
    }

  private:
    static constexpr const char* directNetTraceUnit = "DirectNet";

    Sm& self() { return static_cast<Sm&>(*this); }
    const Sm& self() const { return static_cast<const Sm&>(*this); }
};

} // namespace Routing::DirectNet
