#pragma once

#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

#include "agent/linux/LinkModel.h"
#include "agent/linux/NamedLink.h"
#include "agent/linux/PublishedInterface.h"
#include "agent/linux/RouteMessage.h"
#include "agent/linux/VrfDevice.h"
#include "agent/patch/DevicePatch.h"

namespace Agent::Linux {

/// The links and addresses of one network namespace, as messages and listings tell of them, and the
/// part of the device document that they make up.
///
/// The view never guesses: a message after which it could not tell what a listing would show is
/// refused as doubtful and leaves the view as it was, which is a state the kernel was in. Links are
/// known by index and published by name. Two links may claim one name while messages are
/// outstanding; the later claim holds.
///
/// The addresses of a VRF device and of its ports belong to the VRF that the owner has made of the
/// device, and are published nowhere while there is none. All others belong to the namespace's VRF.
///
/// One agent thread, no locks, no operating system calls.
class NamespaceView {
  public:
    /// `netns` is the namespace's key in the document's "kernel" section, `vrf` the key of its
    /// addresses in "ipv4" and "ipv6". Without `vrfDevices` these are links like any other.
    NamespaceView(Lanx::NamespaceName netns, L3::VrfName vrf, bool vrfDevices = true);

    /// Applies an announced change. False if only a listing of the link can tell what is now so.
    /// A link message is always applied, but may leave the link's IPv6 addresses in doubt. When a
    /// link goes down or changes its VRF, all are taken as gone: the kernel deletes them, or
    /// announces those that it keeps when it uses them again.
    [[nodiscard]] bool apply(const LinkMessage& message);
    [[nodiscard]] bool apply(const Ipv4AddressMessage& message);
    [[nodiscard]] bool apply(const Ipv6AddressMessage& message);

    /// Makes the view what a listing of the namespace shows. Addresses of links that are not listed
    /// are left out.
    void replaceAll(const ListedLinks& listed);
    /// Makes one link what a listing of it shows; it is gone if it is not listed.
    void replaceOne(int index, const ListedLinks& listed);

    /// All VRF devices, by index, if they are not those of the last call.
    std::optional<std::vector<VrfDevice>> takeVrfDevices();
    /// Makes the VRF of a device that one, or none.
    void vrfIs(int device, std::optional<L3::VrfName> vrf);

    /// The merge patch that brings the device document from what the last patch left to what the
    /// view now means; an empty one if nothing differs. Costs what has changed since.
    DevicePatch takePatch();

    /// The link of that name, if there is one, with those of its addresses that are not published.
    /// Costs what these are.
    std::optional<NamedLink> named(Lanx::IntfId name) const;
    /// The names of all links, in no order.
    std::vector<Lanx::IntfId> names() const;

  private:
    /// By the name of an interface.
    template <typename T>
    using ByName = std::unordered_map<Lanx::IntfId, T, Orb::HashFunction<Lanx::IntfId>>;

    struct AddressPatch {
        MapPatch<Lanx::IntfId, Ipv4InterfacePatch> ipv4;
        MapPatch<Lanx::IntfId, Ipv6InterfacePatch> ipv6;
    };
    using AddressPatches = std::map<L3::VrfName, AddressPatch>;

    LinkModel* find(int index);
    void claimName(const LinkModel& model);
    void releaseName(const LinkModel& model);
    void erase(int index);
    void touchWhole(Lanx::IntfId name) { touched_[name].whole = true; }
    int vrfDeviceOf(const LinkMessage& link) const { return vrfDevices_ ? link.vrfDevice() : 0; }
    const LinkModel* owner(Lanx::IntfId name) const;
    const L3::VrfName* vrfOf(const LinkModel* model) const;
    void publishAddresses(Lanx::IntfId name, const LinkModel* model, PublishedInterface& published,
                          PublishedInterface::Touched touched, AddressPatches& patches) const;

    Lanx::NamespaceName netns_;
    bool vrfDevices_;
    /// By index of a VRF device; 0 for the namespace's own.
    std::unordered_map<int, L3::VrfName> vrfs_;
    /// One may have come, gone or changed since they were last told.
    bool devicesTouched_ = false;
    std::vector<VrfDevice> toldDevices_; // by index
    std::unordered_map<int, LinkModel> links_;
    /// Name -> index of the link that claimed it last.
    ByName<int> owners_;
    ByName<PublishedInterface> published_;
    ByName<PublishedInterface::Touched> touched_;
};

} // namespace Agent::Linux
