#pragma once

#include "agent/linux/Address.h"
#include "agent/linux/LinkModel.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <unordered_set>
#include <vector>

namespace Agent::Linux {

/// What the device document holds of one interface name. Publishing brings it to what a link now
/// means and tells the difference, so that the document is always the one a fresh start would give.
class PublishedInterface {
  public:
    /// What may differ from the document.
    struct Changes {
        /// Everything; `addresses` does not matter then.
        bool whole = false;
        std::vector<Address> addresses;
    };
    /// Merge patches for the interface's entry in the section of that name; none if it stays.
    struct Patches {
        std::optional<nlohmann::json> kernel;
        std::optional<nlohmann::json> ipv4;
        std::optional<nlohmann::json> ipv6;
    };

    /// `model` is the link that now has the name `name`, null if none has. Costs as much as
    /// `changes` names, or the addresses of both sides if that is everything.
    Patches publish(const std::string& name, const LinkModel* model, Changes changes);

  private:
    std::optional<nlohmann::json> publishKernel(const std::string& name, const LinkModel* model);
    std::optional<nlohmann::json> publishIpv4(const LinkModel* model, std::vector<Address> changed);
    std::optional<nlohmann::json> publishIpv6(const LinkModel* model,
                                              const std::vector<Address>& changed);

    /// Not set while the kernel section lacks the interface.
    std::optional<bool> running_;
    std::optional<Address> primary_;
    std::unordered_set<Address, AddressHash> secondaries_;
    std::unordered_set<Address, AddressHash> ipv6_;
};

} // namespace Agent::Linux
