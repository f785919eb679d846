#include "agent/device/DeviceInputs.h"

#include <utility>

#include "agent/patch/DocumentError.h"
#include "directnet/root/RootInputs.h"
#include "platform/memtab/Mount.h"
#include "platform/orb/object/Decision.h"

namespace Agent {

using Routing::DirectNetLeakStatus;
using Routing::DirectNet::GrState;
namespace MountPaths = Routing::DirectNet::MountPaths;

namespace {

Orb::Ptr<DirectNetLeakStatus> mountLeakStatus(const Orb::Ptr<Vaultdb::EntityManager>& entityManager,
                                              const Orb::String& path) {
    OrbMemtab::Mount mount(entityManager);
    mount.doMount(path, DirectNetLeakStatus::orbTypeName,
                  OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    return mount.getEntity<DirectNetLeakStatus>(path);
}

/// The walks of the leaks bear no other patch in the middle, which the answer to some notification
/// may be. So nobody answers before they have ended.
template <typename Walk>
void withoutAnswers(const Walk& walk) {
    Orb::decide(walk);
}

} // namespace

DeviceInputs::DeviceInputs(Orb::Ptr<Kiln::TaskScheduler> scheduler, bool gracefulRestart)
    : entityManager_(Orb::makePtr<Vaultdb::EntityManager>()), scheduler_(std::move(scheduler)),
      viaSetConfig_(Orb::makePtr<Routing::Rib::ViaSetConfig>()),
      virtualIpAsReceiveRoute_(Orb::makePtr<Arp::VirtualIpAsReceiveRoute>()),
      allIntfStatusDir_(Orb::makePtr<Interface::AllIntfStatusDir>()),
      allIntfStatusLocalDir_(Orb::makePtr<Interface::AllIntfStatusLocalDir>()),
      ribWaits_(Orb::makePtr<Routing::Rib::AllVrfRibReady>()),
      protoStatusDir_(Orb::makePtr<Orb::Dir>()),
      grState_(Orb::makePtr<GrState>(GrState::Arguments{gracefulRestart})), kernel_(entityManager_),
      leaks4_(mountLeakStatus(entityManager_, MountPaths::ipv4Leaks)),
      leaks6_(mountLeakStatus(entityManager_, MountPaths::ipv6Leaks)) {}

void DeviceInputs::apply(const DevicePatch& patch) {
    checkGracefulRestart(patch);
    const VrfInputs::Plan plan = vrfs_.plan(patch.vrfs);

    vrfs_.withdraw(plan);
    withoutAnswers([&] {
        for (const L3::VrfName& name : plan.idsThatGo) {
            leaks4_.vrfIdDel(name);
            leaks6_.vrfIdDel(name);
        }
    });
    kernel_.apply(patch.kernel);
    ipv4_.apply(patch.ipv4);
    ipv6_.apply(patch.ipv6);
    apply(patch.virtualIps);
    withoutAnswers([&] { apply(patch.leaks); });
    vrfs_.publish(plan);
    withoutAnswers([&] {
        for (const auto& [name, id] : plan.idsThatCome) {
            leaks4_.vrfIdIs(name, id);
            leaks6_.vrfIdIs(name, id);
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

void DeviceInputs::apply(const Edit<LeaksPatch>& patch) {
    leaks4_.apply(memberOf<&LeaksPatch::ipv4>(patch));
    leaks6_.apply(memberOf<&LeaksPatch::ipv6>(patch));
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
