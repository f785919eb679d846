#pragma once

#include <unordered_map>

#include "agent/linux/LinkModel.h"
#include "agent/linux/PublishedInterface.h"
#include "agent/linux/RouteMessage.h"
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
/// One agent thread, no locks, no operating system calls.
class NamespaceView {
  public:
    /// `netns` is the namespace's key in the document's "kernel" section, `vrf` the key of its
    /// addresses in "ipv4" and "ipv6".
    NamespaceView(Lanx::NamespaceName netns, L3::VrfName vrf);

    /// Applies an announced change. False if only a listing of the link can tell what is now so.
    /// A link message is always applied, but may leave the link's IPv6 addresses in doubt.
    [[nodiscard]] bool apply(const LinkMessage& message);
    [[nodiscard]] bool apply(const Ipv4AddressMessage& message);
    [[nodiscard]] bool apply(const Ipv6AddressMessage& message);

    /// Makes the view what a listing of the namespace shows. Addresses of links that are not listed
    /// are left out.
    void replaceAll(const ListedLinks& listed);
    /// Makes one link what a listing of it shows; it is gone if it is not listed.
    void replaceOne(int index, const ListedLinks& listed);

    /// The merge patch that brings the device document from what the last patch left to what the
    /// view now means; an empty one if nothing differs. Costs what has changed since.
    DevicePatch takePatch();

  private:
    /// By the name of an interface.
    template <typename T>
    using ByName = std::unordered_map<Lanx::IntfId, T, Orb::HashFunction<Lanx::IntfId>>;

    LinkModel* find(int index);
    void claimName(const LinkModel& model);
    void releaseName(const LinkModel& model);
    void erase(int index);
    void touchWhole(Lanx::IntfId name) { touched_[name].whole = true; }

    Lanx::NamespaceName netns_;
    L3::VrfName vrf_;
    std::unordered_map<int, LinkModel> links_;
    /// Name -> index of the link that claimed it last.
    ByName<int> owners_;
    ByName<PublishedInterface> published_;
    ByName<PublishedInterface::Touched> touched_;
};

} // namespace Agent::Linux
