#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "agent/device/DeviceInputs.h"
#include "agent/document/DevicePatchReader.h"
#include "agent/document/JsonText.h"
#include "agent/patch/DocumentError.h"
#include "agent/patch/Merge.h"
#include "platform/orb/attribute/DeclaredAttributes.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "tests/agent/PatchJson.h"
#include "tests/agent/RandomPatches.h"

namespace Agent {
namespace {

using nlohmann::json;
using TestSupport::PatchJson;

std::unique_ptr<DeviceInputs> makeInputs() {
    return std::make_unique<DeviceInputs>(
        Orb::makePtr<Kiln::TaskScheduler>(Orb::makePtr<Orb::SimulatedClock>()), false);
}

void patchWith(DeviceInputs& inputs, const json& patch) { inputs.apply(readDevicePatch(patch)); }

json contents(const Routing::RouteLeakedFromVrf& leaks) {
    json all = json::object();
    for (const auto& [prefix, destinations] : leaks.destVrfId()) {
        for (const auto& [destination, leaked] : destinations) {
            all[prefix.toString()][Orb::display(destination)] = leaked;
        }
    }
    return all;
}

/// All that an entity and its members hold.
template <typename T>
json contents(const T& entity) {
    json all = json::object();
    Orb::forEachDeclared<T>([&](auto id) {
        const auto declared = T::orbAttribute(Orb::AttributeTag<id()>{});
        const auto& held = entity.*declared.holder;
        using Holder = std::remove_cvref_t<decltype(held)>;
        json& shown = all[declared.name];
        if constexpr (Orb::isPlainAttribute<Holder>) {
            shown = Orb::display(held.value());
        } else {
            for (const auto& member : held.all()) {
                if constexpr (Orb::isMembers<Holder>) {
                    shown[Orb::display(member->fwkKey())] = contents(*member);
                } else {
                    shown[Orb::display(member.key())] = Orb::display(member.value());
                }
            }
        }
    });
    return all;
}

template <typename T>
json mounted(const DeviceInputs& inputs, const std::string& path) {
    const auto* table = dynamic_cast<const T*>(inputs.entityManager()->entity(path));
    return table == nullptr ? json() : contents(*table);
}

json contents(const DeviceInputs& inputs) {
    json all{contents(*inputs.vrfs().nameToIdMapWrapper()->nameToIdMap()),
             contents(*inputs.vrfs().allVrfStatusLocal()),
             contents(*inputs.ipStatus()),
             contents(*inputs.ip6Status()),
             contents(*inputs.virtualIpStatus()),
             contents(*inputs.virtualIp6Status()),
             contents(*inputs.allVrfRibReady()),
             inputs.grState()->startReadyVerification()};
    for (const char* path : {"kni/ns/default/status", "kni/ns/ns-red/status"}) {
        json devices = mounted<KernelNetInfo::Status>(inputs, path);
        // A table that nobody mounts any more holds what one that was never mounted holds.
        all.push_back(devices.is_null() ? json() : devices["device"]);
    }
    for (const char* path : {"routing/directNetLeakStatus", "routing6/directNetLeakStatus"}) {
        all.push_back(mounted<Routing::DirectNetLeakStatus>(inputs, path));
    }
    return all;
}

TEST(DeviceInputs, PatchesLeadWhereTheMergedDocumentLeads) {
    for (unsigned seed = 1; seed <= 30; ++seed) {
        TestSupport::RandomPatches random(seed);
        const auto inputs = makeInputs();
        json document = json::object();
        DevicePatch typed; // the same document
        for (int step = 0; step < 60; ++step) {
            const json patch = random.next();
            const json before = contents(*inputs);
            try {
                patchWith(*inputs, patch);
            } catch (const DocumentError& error) { // two VRFs with one id
                EXPECT_NE(std::string(error.what()).find("is the id of VRF"), std::string::npos);
                ASSERT_EQ(contents(*inputs), before) << "seed " << seed << ' ' << patch;
                continue;
            }
            document.merge_patch(patch);
            const DevicePatch typedAfter = merged(typed, readDevicePatch(patch));
            ASSERT_EQ(PatchJson::of(typedAfter), document) << "seed " << seed << ' ' << patch;
            const DevicePatch way = difference(typed, typedAfter);
            ASSERT_EQ(PatchJson::of(merged(typed, way)), document)
                << "seed " << seed << ' ' << patch;
            ASSERT_TRUE(isEmpty(difference(typedAfter, typedAfter)));
            typed = typedAfter;
            const auto atOnce = makeInputs();
            patchWith(*atOnce, document);
            ASSERT_EQ(contents(*inputs), contents(*atOnce))
                << "seed " << seed << " step " << step << ' ' << patch << "\n"
                << document;
        }
        inputs->apply(difference(typed, DevicePatch()));
        EXPECT_EQ(contents(*inputs), contents(*makeInputs())) << "seed " << seed;
    }
}

/// Looks at an interface whenever anything of it changes.
class RoleWatch : public Orb::NotifieeOf<Ip::IpIntfStatus> {
  public:
    explicit RoleWatch(const Ip::IpIntfStatus* status) {
        hasNotificationActiveIs(true);
        notifierIs(Orb::Ptr<const Ip::IpIntfStatus>(status));
    }
    void onAttribute(Orb::AttributeId, const void*) override {
        const auto& status = *notifier();
        EXPECT_FALSE(status.activeSecondaryWithMask().contains(status.activeAddrWithMask()));
    }
};

TEST(DeviceInputs, AnAddressNeverHasTwoRolesNotEvenForAMoment) {
    const auto inputs = makeInputs();
    const auto patchInterface = [&](const char* patch) {
        patchWith(*inputs, {{"ipv4", {{"default", {{"e", parseJson(patch)}}}}}});
    };
    patchInterface(R"({"address":"10.0.0.1/24"})");
    const Ip::IpIntfStatus* status = inputs->ipStatus()
                                         ->vrfIpIntfStatus(L3::VrfName("default"))
                                         ->ipIntfStatus(Lanx::IntfId("e"));
    const RoleWatch watch(status);
    const struct {
        const char* patch;
        const char* primary;
        const char* secondaries;
    } steps[] = {
        {R"({"secondary":{"10.0.0.1/24":true}})", "10.0.0.1/24", ""},
        {R"({"unnumbered":"lo"})", "0.0.0.0/0", "10.0.0.1/24 "},
        {R"({"secondary":{"10.0.0.1/24":false}})", "10.0.0.1/24", ""},
        {R"({"secondary":{"10.0.0.1/24":true,"10.0.0.2/24":true}})", "0.0.0.0/0",
         "10.0.0.1/24 10.0.0.2/24 "},
        {R"({"unnumbered":null})", "10.0.0.1/24", "10.0.0.2/24 "},
        {R"({"address":"10.0.0.2/24"})", "10.0.0.2/24", "10.0.0.1/24 "},
        {R"({"address":null,"secondary":{"10.0.0.1/24":null}})", "0.0.0.0/0", "10.0.0.2/24 "},
        {R"({"address":"10.0.0.2/24","secondary":null})", "10.0.0.2/24", ""},
    };
    for (const auto& step : steps) {
        patchInterface(step.patch);
        std::string secondaries;
        for (const auto& entry : status->activeSecondaryWithMask()) {
            secondaries += entry.key().toString() + ' ';
        }
        EXPECT_EQ(status->activeAddrWithMask().toString(), step.primary) << step.patch;
        EXPECT_EQ(secondaries, step.secondaries) << step.patch;
    }
}

/// Sees that at no moment two VRFs have one id.
class IdWatch : public Orb::NotifieeOf<Vrf::VrfIdMap::NameToIdMap> {
  public:
    explicit IdWatch(const Orb::Ptr<Vrf::VrfIdMap::NameToIdMap>& map) {
        hasNotificationActiveIs(true);
        notifierIs(map);
    }
    void onAttribute(Orb::AttributeId, const void* key) override {
        std::set<Vrf::VrfIdMap::VrfId> ids;
        for (const auto& entry : notifier()->vrfId()) {
            EXPECT_TRUE(ids.insert(entry.value()).second);
        }
        const auto& name = Orb::keyAs<L3::VrfName>(key);
        log += (notifier()->vrfIdExists(name) ? "+" : "-") + name.value() + ' ';
    }
    std::string log;
};

TEST(DeviceInputs, VrfsSwapTheirIdsAndNeverShareOne) {
    const auto inputs = makeInputs();
    patchWith(*inputs, parseJson(R"({"vrfs":{"red":{"id":1},"blue":{"id":2}}})"));
    const IdWatch watch(inputs->vrfs().nameToIdMapWrapper()->nameToIdMap());
    patchWith(*inputs, parseJson(R"({"vrfs":{"red":{"id":2},"blue":{"id":1}}})"));
    EXPECT_EQ(watch.log, "-blue -red +blue +red ");
}

} // namespace
} // namespace Agent
