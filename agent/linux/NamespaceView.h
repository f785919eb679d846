#pragma once

#include "agent/linux/AddressMessage.h"
#include "agent/linux/LinkMessage.h"
#include "agent/linux/LinkModel.h"
#include "agent/linux/PublishedInterface.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

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
    NamespaceView(std::string netns, std::string vrf);

    /// Applies an announced change. False if only a listing of the link can tell what is now so.
    /// A link message is always applied, but may leave the link's IPv6 addresses in doubt.
    [[nodiscard]] bool apply(const LinkMessage& message);
    [[nodiscard]] bool apply(const AddressMessage& message);

    /// Makes the view what a listing of the namespace shows. `addresses` stand in the kernel's
    /// order; those of links that are not listed are left out.
    void replaceAll(const std::vector<LinkMessage>& links,
                    const std::vector<AddressMessage>& addresses);
    /// Makes one link what a listing of it shows; no `link` if it is gone.
    void replaceOne(int index, const std::optional<LinkMessage>& link,
                    const std::vector<AddressMessage>& addresses);

    /// The merge patch that brings the device document from what the last patch left to what the
    /// view now means; an empty object if nothing differs. Costs what has changed since.
    nlohmann::json takePatch();

  private:
    void claimName(const LinkModel& model);
    void releaseName(const LinkModel& model);
    void erase(int index);
    void touchWhole(const std::string& name) { changes_[name].whole = true; }

    std::string netns_;
    std::string vrf_;
    std::unordered_map<int, LinkModel> links_;
    /// Name -> index of the link that claimed it last.
    std::unordered_map<std::string, int> owners_;
    std::unordered_map<std::string, PublishedInterface> published_;
    std::unordered_map<std::string, PublishedInterface::Changes> changes_;
};

} // namespace Agent::Linux
