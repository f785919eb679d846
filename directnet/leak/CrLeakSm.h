#pragma once

#include "directnet/leak/LeakReactors.h"
#include "directnet/model/Units.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/routing/DirectNetLeakLocalStatus.h"
#include "platform/routing/DirectNetLeakStatus.h"

namespace Routing::DirectNet {

/// Keeps the agent's copy of a leak status in line with the mounted one, entry by entry.
class CrLeakSm : public Orb::Entity {
    ORB_ENTITY(CrLeakSm, "Routing::DirectNet::CrLeakSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const DirectNetLeakStatus>, crLeakStatus),
                    (Orb::Ptr<DirectNetLeakLocalStatus>, crLeakLocalStatus))

  public:
    /// Watches the leaks of one source VRF.
    class OrbRouteLeakedFromVrf
        : public SourceVrfReactor<Orb::InputMemberReactor<CrLeakSm, RouteLeakedFromVrf>> {
        ORB_TYPE(OrbRouteLeakedFromVrf, "Routing::DirectNet::CrLeakSm::OrbRouteLeakedFromVrf")

      public:
        using SourceVrfReactor::SourceVrfReactor;
        void handleInitialized() { owner()->handleLeaks(*notifier()); }
        void notifierIs(Orb::Ptr<const RouteLeakedFromVrf> leaks) override;
    };
    ORB_REACTORS(260, OrbRouteLeakedFromVrf, routeLeakedFromVrf)
    ORB_ATTRIBUTE(261, bool, initialized)

  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    explicit CrLeakSm(Arguments arguments);

    void handleInitialized();

    void handleSourceVrf(const DirectNetLeakStatus& status, VrfId sourceVrfId);
    void handleLeakedPrefix(const RouteLeakedFromVrf& leaks, const LeakedPrefix& leaked);

  private:
    using OrbCrLeakStatus = LeakStatusReactor<Orb::InputReactor<CrLeakSm, DirectNetLeakStatus>>;

    /// Brings the whole copy of a source VRF in line.
    void handleLeaks(const RouteLeakedFromVrf& leaks);

    OrbCrLeakStatus orbCrLeakStatus_;
};

} // namespace Routing::DirectNet
