#pragma once

#include <utility>

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
    class OrbRouteLeakedFromVrf : public Orb::InputMemberReactor<CrLeakSm, RouteLeakedFromVrf> {
        ORB_TYPE(OrbRouteLeakedFromVrf, "Routing::DirectNet::CrLeakSm::OrbRouteLeakedFromVrf")

      public:
        OrbRouteLeakedFromVrf(CrLeakSm* sm, Orb::Ptr<const RouteLeakedFromVrf> leaks);
        void handleInitialized() { owner()->handleSourceVrf(*notifier()); }
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void notifierIs(Orb::Ptr<const RouteLeakedFromVrf> leaks) override;
    };
    ORB_REACTORS(260, OrbRouteLeakedFromVrf, routeLeakedFromVrf)
    ORB_ATTRIBUTE(261, bool, initialized)

    explicit CrLeakSm(Arguments arguments);
    ~CrLeakSm() override;

    void handleInitialized();

  private:
    using VrfId = Vrf::VrfIdMap::VrfId;

    class OrbCrLeakStatus : public Orb::InputReactor<CrLeakSm, DirectNetLeakStatus> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    void handleSourceVrf(VrfId sourceVrfId);
    /// Copies what `leaks` has and removes what it has not.
    void handleSourceVrf(const RouteLeakedFromVrf& leaks);
    void handleLeakedPrefix(const RouteLeakedFromVrf& leaks, const LeakedPrefix& leaked);
    void doDeleteLeaks(VrfId sourceVrfId, const RouteLeakedFromVrf* except);

    OrbCrLeakStatus orbCrLeakStatus_;
};

} // namespace Routing::DirectNet
