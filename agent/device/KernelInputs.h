#pragma once

#include <set>

#include "agent/patch/DevicePatch.h"
#include "platform/interface/KernelNetInfo.h"
#include "platform/memtab/Mount.h"

namespace Agent {

/// The kernel devices that the agent is told of, in one mounted table per network namespace.
class KernelInputs {
  public:
    explicit KernelInputs(const Orb::Ptr<Vaultdb::EntityManager>& entityManager);

    void apply(const Edit<KernelPatch>& patch);

  private:
    using NamespacePatch = MapPatch<Lanx::IntfId, KernelDevicePatch>;

    void applyTo(const Lanx::NamespaceName& netns, const NamespacePatch& patch);
    /// The namespace's table, mounted if it is not yet.
    Orb::Ptr<KernelNetInfo::Status> table(const Lanx::NamespaceName& netns);
    void clear(const Lanx::NamespaceName& netns);

    OrbMemtab::Mount mount_;
    std::set<Lanx::NamespaceName> mounted_;
};

} // namespace Agent
