#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "agent/install/InstallWire.h"
#include "agent/linux/LinkMessage.h"

namespace Agent {

/// The links of a namespace, as far as what is installed depends on them.
class InstallLinks {
  public:
    struct Link {
        Lanx::IntfId name;
        bool isUp = false;
        int vrfDevice = 0;          ///< index of the one that it is or is in
        std::uint32_t vrfTable = 0; ///< of a VRF device
        unsigned generation = 0;
    };

    void apply(const Linux::LinkMessage& message);
    void apply(const ProxySettingMessage& message);

    /// Links that no message tells of until the listing ends are gone.
    void beginListing() { ++generation_; }
    void endListing();

    /// The index of the link of that name; 0 if there is none.
    int index(Lanx::IntfId name) const;
    bool isUp(int index) const;
    /// The table of the VRF device that the link is or is in; 0 if it is in none.
    std::uint32_t vrfTable(int index) const;
    /// The empty one if there is no such link.
    Lanx::IntfId name(int index) const;

    /// Why the link does not answer for proxy neighbours: "proxy_ndp is off"; empty if it does, or
    /// there is no such link.
    std::string obstacle(Lanx::IntfId name) const;

  private:
    struct Setting {
        bool proxyNdp = false;
        bool forwarding = false;
    };

    std::unordered_map<int, Link> links_;
    std::unordered_map<Lanx::IntfId, int, Orb::HashFunction<Lanx::IntfId>> indexes_;
    std::unordered_map<int, Setting> settings_;
    unsigned generation_ = 0;
};

} // namespace Agent
