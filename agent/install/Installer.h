#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "agent/install/ContributorWatch.h"
#include "agent/install/KernelPlaces.h"
#include "agent/install/NamespaceInstaller.h"
#include "agent/install/RouteUse.h"
#include "agent/topics/AgentView.h"
#include "agent/topics/KernelWords.h"

namespace Agent {

/// Installs in the kernels of the followed namespaces those of the agent's routes that no kernel
/// makes by itself, under a protocol number of the agent's own, and removes what is under that
/// number and not wanted.
///
/// One agent thread, no locks. What it is made of must outlive it.
class Installer final : public KernelPlaces::Observer, public KernelWords {
  public:
    using Report = NamespaceInstaller::Report;

    struct Options {
        std::uint8_t protocol = 0;
        bool keep = false; ///< leave everything installed at the end
    };

    Installer(const AgentView& view, const KernelPlaces& places, Orb::Ptr<Orb::Clock> clock,
              const Options& options, Report report);
    Installer(const Installer&) = delete;
    Installer& operator=(const Installer&) = delete;
    ~Installer() override = default;

    /// The route of that key has come, changed or gone, or may have to be seen in another light.
    void routeChanged(const Routing::Rib::RouteKey& key);

    void onNamespace(const Lanx::NamespaceName& netns) override;
    void onVrfs(const Lanx::NamespaceName& netns) override;
    void onNamespaceGone(const Lanx::NamespaceName& netns) override;

    /// Looks whether VRFs have become ready, for what an earlier run left.
    void turn();

    /// Removes everything of the protocol from the namespaces that are followed, unless it is to be
    /// kept. Takes half a minute at most. Of no further use.
    void finish();

    std::optional<std::string> words(const Routing::Rib::RouteKey& route) const override;

  private:
    using RouteKey = Routing::Rib::RouteKey;

    struct Namespace {
        std::unique_ptr<NamespaceInstaller> installer;
        std::string ready; ///< which VRFs were ready when leftovers were last looked at
    };
    /// Where a route is to be in a kernel.
    struct Target {
        NamespaceInstaller* installer = nullptr; ///< null if nowhere
        KernelSlot slot{};
        std::optional<KernelSlot> proxy{};
        InstallWant want{};
        std::string_view obstacle{}; ///< why it can be nowhere; empty if that may change

        friend bool operator==(const Target&, const Target&) = default;
    };
    struct Tracked {
        RouteUse use;
        Target target{};
    };
    using Routes = std::unordered_map<RouteKey, Tracked, Orb::HashFunction<RouteKey>>;

    Target targetOf(const RouteKey& key, const RouteUse& use);
    Target targetOfVirtual(const RouteKey& key, const RouteUse& use, const L3::VrfName& vrf,
                           const VrfPlace& place);
    Target targetOfLeaked(const RouteKey& key, const RouteUse& use, const L3::VrfName& vrf,
                          const VrfPlace& place);
    const std::optional<VrfPlace>& placeOf(const L3::VrfName& vrf);
    NamespaceInstaller* installerOf(const Lanx::NamespaceName& netns) const;
    void retarget(const RouteKey& key, Tracked& tracked);
    static void aim(Tracked& tracked, Target target);
    void lookAtPlaces();
    void lookAtLeaks(const RouteKey& source);
    bool isReady(const L3::VrfName& vrf, Lanx::AddressFamily af) const;
    bool isReleased(const Lanx::NamespaceName& netns, const KernelEntry& entry) const;
    std::string readyOf(const Lanx::NamespaceName& netns) const;

    AgentView view_;
    const KernelPlaces& places_;
    Orb::Ptr<Orb::Clock> clock_;
    Options options_;
    Report report_;
    std::map<Lanx::NamespaceName, Namespace> namespaces_;
    /// The places of the VRFs that routes were aimed at, as they were then.
    std::map<L3::VrfName, std::optional<VrfPlace>> known_;
    Routes routes_;
    ContributorWatch contributors_;
};

} // namespace Agent
