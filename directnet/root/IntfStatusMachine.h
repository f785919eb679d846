#pragma once

#include "directnet/model/Trace.h"
#include "directnet/root/KernelIntfStatus.h"
#include "platform/orb/Keys.h"
#include "platform/orb/Reactor.h"

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
        if (isDue(intfId)) {
            DIRECTNET_TRACE(8, self(), ' ', intfId, " all conditions met");
            if (self().hasIntfSm(intfId)) {
                DIRECTNET_TRACE(8, self(), ' ', intfId, " SM exists");
                return;
            }
            DIRECTNET_TRACE(7, self(), ' ', intfId, " create SM");
            DIRECTNET_RINGLOG(intfId, Sm::createText);
            self().doCreateIntfSm(intfId);
        } else if (self().hasIntfSm(intfId)) {
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
    class OrbKernelIntfDir : public Orb::Reactor<Sm, Interface::DeviceIntfStatusDir> {
      public:
        using Orb::Reactor<Sm, Interface::DeviceIntfStatusDir>::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override {
            if (id == Interface::DeviceIntfStatusDir::intfStatusAndDeviceNameId) {
                this->owner()->handleIntfId(Orb::keyAs<Lanx::IntfId>(key));
            }
        }
    };

    /// Watches the VRF's interface statuses, in the collection of that number.
    template <typename Watched, Orb::AttributeId collectionId>
    class OrbIntfStatuses : public Orb::Reactor<Sm, Watched> {
      public:
        using Orb::Reactor<Sm, Watched>::Reactor;
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

    bool isDue(Lanx::IntfId intfId) const {
        if (!self().hasIntfStatus(intfId)) {
            DIRECTNET_TRACE(8, self(), ' ', intfId, Sm::absentText);
            return false;
        }
        if (!self().kernelIntfStatus()->kernelIntfPresent(intfId)) {
            DIRECTNET_TRACE(8, self(), ' ', intfId, " not present in kernelIntfStatus");
            return false;
        }
        return true;
    }
};

} // namespace Routing::DirectNet
