#include "agent/device/DeviceInputs.h"

#include <utility>

#include "agent/patch/DocumentError.h"
#include "directnet/root/RootInputs.h"
#include "platform/memtab/Mount.h"
#include "platform/orb/object/Decision.h"

namespace Agent {

using Routing::DirectNetLeakStatus;
using Routing::DirectNet::GrState;
using Routing::Rib::Memtab::ViaSetCollection;
namespace MountPaths = Routing::DirectNet::MountPaths;

namespace {

template <typename T>
Orb::Ptr<T> mountToWrite(const Orb::Ptr<Vaultdb::EntityManager>& entityManager,
                         const Orb::String& path) {
    OrbMemtab::Mount mount(entityManager);
    mount.doMount(path, T::orbTypeName, OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    return mount.getEntity<T>(path);
}

/// What an earlier run leaked is not to be leaked before it is said again.
Orb::Ptr<DirectNetLeakStatus> mountLeaks(const Orb::Ptr<Vaultdb::EntityManager>& entityManager,
                                         const Orb::String& path) {
    auto status = mountToWrite<DirectNetLeakStatus>(entityManager, path);
    status->leakedRouteBySourceVrfDelAll();
    return status;
}

} // namespace

DeviceInputs::Leaks::Leaks(const Orb::Ptr<Vaultdb::EntityManager>& entityManager)
    : ipv4(mountLeaks(entityManager, MountPaths::ipv4Leaks)),
      ipv6(mountLeaks(entityManager, MountPaths::ipv6Leaks)) {}

// The via sets are mounted first: of two agents the second is refused before it has changed
// anything.
DeviceInputs::DeviceInputs(Orb::Ptr<Kiln::TaskScheduler> scheduler, bool gracefulRestart,
                           Tables tables)
    : entityManager_(Orb::makePtr<Vaultdb::EntityManager>(std::move(tables.folder))),
      scheduler_(std::move(scheduler)),
      viaSetConfig_(Orb::makePtr<Routing::Rib::ViaSetConfig>(
          mountToWrite<ViaSetCollection>(entityManager_, MountPaths::viaSets))),
      virtualIpAsReceiveRoute_(Orb::makePtr<Arp::VirtualIpAsReceiveRoute>()),
      allIntfStatusDir_(Orb::makePtr<Interface::AllIntfStatusDir>()),
      allIntfStatusLocalDir_(Orb::makePtr<Interface::AllIntfStatusLocalDir>()),
      ribWaits_(Orb::makePtr<Routing::Rib::AllVrfRibReady>()),
      protoStatusDir_(Orb::makePtr<Orb::Dir>()),
      grState_(Orb::makePtr<GrState>(GrState::Arguments{gracefulRestart})),
      kernel_(entityManager_) {
    if (!tables.externalLeaks) {
        leaks_.emplace(entityManager_);
    }
}

void DeviceInputs::apply(const DevicePatch& patch) {
    checkGracefulRestart(patch);
    const VrfInputs::Plan plan = vrfs_.plan(patch.vrfs);

    vrfs_.withdraw(plan);
    changeLeaks([&](Leaks& leaks) {
        for (const L3::VrfName& name : plan.idsThatGo) {
            leaks.ipv4.vrfIdDel(name);
            leaks.ipv6.vrfIdDel(name);
        }
    });
    kernel_.apply(patch.kernel);
    ipv4_.apply(patch.ipv4);
    ipv6_.apply(patch.ipv6);
    apply(patch.virtualIps);
    changeLeaks([&](Leaks& leaks) {
        leaks.ipv4.apply(memberOf<&LeaksPatch::ipv4>(patch.leaks));
        leaks.ipv6.apply(memberOf<&LeaksPatch::ipv6>(patch.leaks));
    });
    vrfs_.publish(plan);
    changeLeaks([&](Leaks& leaks) {
        for (const auto& [name, id] : plan.idsThatCome) {
            leaks.ipv4.vrfIdIs(name, id);
            leaks.ipv6.vrfIdIs(name, id);
        }
    });
    applyRibWaits(patch.ribWaits);
    grState_->startReadyVerificationIs(
        after<&DevicePatch::startReadyVerification>(patch, grState_->startReadyVerification()));
}

void DeviceInputs::checkGracefulRestart(const DevicePatch& patch) const {
    const bool present = grState_->gracefulRestart();
    if (after<&DevicePatch::gracefulRestart>(patch, present) != present) {
        throw DocumentError("/gracefulRestart", "cannot change once the agent has started");
    }
}

void DeviceInputs::apply(const Edit<VirtualIpsPatch>& patch) {
    VirtualIp::VirtualIpStatus& status = *virtualIps4_.status();
    status.subnetRoutesIs(after<&VirtualIpsPatch::subnetRoutes>(patch, status.subnetRoutes()));
    virtualIps4_.apply(memberOf<&VirtualIpsPatch::ipv4>(patch));
    virtualIps6_.apply(memberOf<&VirtualIpsPatch::ipv6>(patch));
}

// The walks of the leaks bear no other patch in the middle, which the answer to some notification
// may be. So nobody answers before they have ended.
template <typename Change>
void DeviceInputs::changeLeaks(const Change& change) {
    if (leaks_) {
        Orb::decide([&] { change(*leaks_); });
    }
}

void DeviceInputs::applyRibWaits(const Edit<VrfSetPatch>& patch) {
    if (patch.isRemoval()) {
        ribWaits_->vrfDelAll();
    }
    if (const VrfSetPatch* vrfs = patch.value()) {
        for (const auto& [name, edit] : *vrfs) {
            const bool* waits = edit.value();
            if (waits != nullptr && *waits) {
                ribWaits_->vrfIs(name, true);
            } else if (edit.isGiven()) {
                ribWaits_->vrfDel(name);
            }
        }
    }
}

} // namespace Agent
