#pragma once

#include <map>

#include "platform/orb/object/Reactor.h"
#include "platform/routing/DirectNetLeakStatus.h"
#include "platform/routing/PerVrfTable.h"
#include "platform/routing/RecordForms.h"

namespace Routing {

/// Writes the leaks of a status to a table of a folder, from now on, after it has put those into
/// the status that it found there. What does not fit is said once and comes when there is room.
class LeakRecorder : public Orb::PtrInterface {
  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    LeakRecorder(Orb::Ptr<Vaultdb::Folder> folder, const Orb::String& path,
                 Orb::Ptr<DirectNetLeakStatus> status);
    ~LeakRecorder() override;

  private:
    class StatusReactor : public Orb::Reactor<LeakRecorder, DirectNetLeakStatus> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };
    class SourceReactor : public Orb::Reactor<LeakRecorder, RouteLeakedFromVrf> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    void handleSource(VrfId source);
    void handleLeak(const LeakedRoute& leak, bool present);
    void writeAll(const RouteLeakedFromVrf& leaks);
    void handleSpace();

    static constexpr std::uint32_t ringEntries = 1U << 10;

    Orb::Ptr<Vaultdb::Folder> folder_;
    Orb::String path_;
    Rib::PerVrfTable<Rib::LeakForm> table_{ringEntries};
    bool isIncomplete_ = false;
    bool isReported_ = false; ///< since it was complete
    StatusReactor status_{this};
    std::map<VrfId, SourceReactor> sources_;
};

} // namespace Routing
