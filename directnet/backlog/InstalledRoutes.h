#pragma once

#include <string>

#include "directnet/backlog/PrefixIndex.h"

namespace Routing::DirectNet {

/// The collection IntfBacklogSm::installedIntfId: for each prefix with a route, the interface that
/// it was written for. It lies in the VRF's prefix index; what a machine has noted there goes with
/// the machine.
class InstalledRoutes {
  public:
    using Value = Lanx::IntfId;
    using Key = Lanx::IpGenPrefix;

    explicit InstalledRoutes(PrefixIndex& index) : index_(index) {}
    InstalledRoutes(const InstalledRoutes&) = delete;
    InstalledRoutes& operator=(const InstalledRoutes&) = delete;
    ~InstalledRoutes() { index_.forgetInstalled(); }

    const PrefixIndex::Installed& all() const { return index_.installed(); }

    Lanx::IntfId find(const Key& prefix) const {
        return index_.installedIntfId(prefix, Orb::HashTag::of(prefix));
    }
    void memberIs(const Orb::Entity& owner, Orb::AttributeId id, const Key& prefix,
                  Lanx::IntfId intfId) {
        memberIs(owner, id, prefix, intfId, Orb::HashTag::of(prefix));
    }
    void memberIs(const Orb::Entity& owner, Orb::AttributeId id, const Key& prefix,
                  Lanx::IntfId intfId, Orb::HashTag tag) {
        tellIf(index_.installedIntfIdIs(prefix, tag, intfId), owner, id, prefix);
    }
    void memberDel(const Orb::Entity& owner, Orb::AttributeId id, const Key& prefix) {
        memberDel(owner, id, prefix, Orb::HashTag::of(prefix));
    }
    void memberDel(const Orb::Entity& owner, Orb::AttributeId id, const Key& prefix,
                   Orb::HashTag tag) {
        const Key stable = prefix; // the caller's may be that of a set which goes
        tellIf(index_.installedIntfIdDel(stable, tag), owner, id, stable);
    }
    void memberDelAll(const Orb::Entity& owner, Orb::AttributeId id) {
        const Orb::Ptr<const Orb::PtrInterface> kept = Orb::keep(owner);
        while (!all().empty()) {
            // On from each in turn: a set that has contributors stays in the table.
            for (const auto* set = all().first(); set != nullptr;) {
                const Key prefix = (*set)->genPrefix();
                memberDel(owner, id, prefix);
                set = all().after(prefix);
            }
        }
    }

    std::string text() const { return std::to_string(all().size()) + " members"; }

  private:
    static void tellIf(bool changed, const Orb::Entity& owner, Orb::AttributeId id,
                       const Key& prefix) {
        if (changed && owner.hasReactors()) {
            const Key stable = prefix;
            owner.notify(id, &stable);
        }
    }

    PrefixIndex& index_;
};

} // namespace Routing::DirectNet
