#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "agent/device/DeviceInputs.h"
#include "agent/document/DocumentError.h"
#include "agent/document/JsonText.h"
#include "platform/orb/SimulatedClock.h"

namespace Agent {
namespace {

using nlohmann::json;

std::unique_ptr<DeviceInputs> makeInputs(bool gracefulRestart = false) {
    return std::make_unique<DeviceInputs>(
        Orb::makePtr<Kiln::TaskScheduler>(Orb::makePtr<Orb::SimulatedClock>()), gracefulRestart);
}

void patchWith(DeviceInputs& inputs, const json& patch) { inputs.apply(readDevicePatch(patch)); }

void patchWith(DeviceInputs& inputs, const char* patch) { patchWith(inputs, parseJson(patch)); }

/// Everything that the inputs hold, as JSON whose objects sort themselves.
class Dump {
  public:
    explicit Dump(const DeviceInputs& inputs) : inputs_(inputs) {
        vrfs();
        addresses();
        virtualIps();
        kernel("default");
        kernel("ns-red");
        leaks("routing/directNetLeakStatus");
        leaks("routing6/directNetLeakStatus");
        for (const auto& [name, waits] : inputs.allVrfRibReady()->vrf()) {
            all_["ribWaits"][name.value()] = waits;
        }
        all_["verify"] = inputs.grState()->startReadyVerification();
    }

    std::string text() const { return all_.dump(1); }

  private:
    void vrfs() {
        for (const auto& [name, id] : inputs_.vrfs().nameToIdMapWrapper()->nameToIdMap()->vrfId()) {
            all_["id"][name.value()] = id.value();
            all_["name"][name.value()] = inputs_.vrfs().name(id)->value();
        }
        for (const auto& status : inputs_.vrfs().allVrfStatusLocal()->vrf()) {
            all_["status"][status->vrfName().value()] = {
                {"state", static_cast<int>(status->state())}, {"netns", status->netNs().value()}};
        }
    }

    void addresses() {
        for (const auto& vrf : inputs_.ipStatus()->vrfIpIntfStatus()) {
            json& at = all_["ipv4"][vrf->vrfName().value()] = json::object();
            for (const auto& intf : vrf->ipIntfStatus()) {
                json& one = at[std::string(intf->intfId().name())];
                one["address"] = intf->activeAddrWithMask().toString();
                one["unnumbered"] = intf->unnumberedIntfId().name();
                one["broadcast"] = intf->directedBroadcast();
                for (const auto& [address, used] : intf->activeSecondaryWithMask()) {
                    one["secondary"][address.toString()] = used;
                }
            }
        }
        for (const auto& vrf : inputs_.ip6Status()->vrfIp6IntfStatus()) {
            json& at = all_["ipv6"][vrf->vrfName().value()] = json::object();
            for (const auto& intf : vrf->intfStatus()) {
                json& one = at[std::string(intf->intfId().name())] = json::object();
                for (const auto& [address, info] : intf->addr()) {
                    one[address.toString()] = info.active;
                }
            }
        }
    }

    template <typename Status>
    void virtualIp(const Status& status, const std::string& vrf, const std::string& address) {
        json& at = all_["virtualIp"][vrf][address] = json::object();
        for (const auto& [intfId, carries] : status.intfId()) {
            at[std::string(intfId.name())] = carries;
        }
    }

    void virtualIps() {
        all_["subnetRoutes"] = inputs_.virtualIpStatus()->subnetRoutes();
        for (const auto& status : inputs_.virtualIpStatus()->virtualIpIntfStatus()) {
            const auto& key = status->vrfIpWithMask();
            virtualIp(*status, key.vrfName().value(), key.ipAddrWithMask().toString());
        }
        for (const auto& status : inputs_.virtualIp6Status()->virtualIp6IntfStatus()) {
            const auto& key = status->vrfIp();
            virtualIp(*status, key.vrfName().value(), key.ipAddr().toString());
        }
    }

    void kernel(const std::string& netns) {
        const auto* table = dynamic_cast<const KernelNetInfo::Status*>(
            inputs_.entityManager()->entity("kni/ns/" + netns + "/status"));
        if (table != nullptr) {
            for (const auto& [intfId, device] : table->device()) {
                all_["kernel"][netns][std::string(intfId.name())] = {device.name(),
                                                                     device.running()};
            }
        }
    }

    void leaks(const std::string& path) {
        const auto* table = dynamic_cast<const Routing::DirectNetLeakStatus*>(
            inputs_.entityManager()->entity(path));
        for (const auto& source : table->leakedRouteBySourceVrf()) {
            json& at = all_[path][std::to_string(source->sourceVrfId().value())];
            for (const auto& [prefix, destinations] : source->destVrfId()) {
                for (const auto& [destination, leaked] : destinations) {
                    at[prefix.toString()][std::to_string(destination.value())] = leaked;
                }
            }
        }
    }

    const DeviceInputs& inputs_;
    json all_;
};

std::string dump(const DeviceInputs& inputs) { return Dump(inputs).text(); }

/// Random merge patches over a small world, so that they often meet.
class RandomPatch {
  public:
    explicit RandomPatch(unsigned seed) : engine_(seed) {}

    json next() {
        json patch = json::object();
        for (unsigned parts = 1 + below(3); parts > 0; --parts) {
            part(patch);
        }
        return patch;
    }

  private:
    using Part = json (RandomPatch::*)();

    unsigned below(unsigned limit) { return static_cast<unsigned>(engine_() % limit); }
    bool rarely() { return below(6) == 0; }
    json flag() { return rarely() ? json(nullptr) : json(below(3) != 0); }
    std::string vrf() { return std::array{"default", "red", "blue"}[below(3)]; }
    std::string intf() { return std::array{"e1", "e2", "Loopback0"}[below(3)]; }
    std::string address() {
        return "10.0." + std::to_string(below(2)) + "." + std::to_string(below(3)) + "/24";
    }
    std::string address6() { return "2001:db8::" + std::to_string(below(4)); }

    /// An object of some random keys, or now and then the removal of the whole.
    template <typename Key, typename Value>
    json object(Key key, Value value) {
        if (rarely() && rarely()) {
            return nullptr;
        }
        json made = json::object();
        for (unsigned members = below(3); members > 0; --members) {
            const std::string at = key();
            made[at] = rarely() ? json(nullptr) : json(value());
        }
        return made;
    }

    json byVrf(const std::function<json()>& value) {
        return object([this] { return vrf(); }, value);
    }
    json byIntf(const std::function<json()>& value) {
        return object([this] { return intf(); }, value);
    }
    json flagsOf(const std::function<std::string()>& key) {
        return object(key, [this] { return flag(); });
    }

    json ipv4Interface() {
        json made = json::object();
        if (below(2) != 0) {
            made["address"] = rarely() ? json(nullptr) : json(address());
        }
        if (below(2) != 0) {
            made["secondary"] = flagsOf([this] { return address(); });
        }
        if (rarely()) {
            made["unnumbered"] = below(2) != 0 ? json("Loopback0") : json(nullptr);
        }
        if (rarely()) {
            made["directedBroadcast"] = flag();
        }
        return made;
    }

    json vrfEntry() {
        json made = json::object();
        if (below(2) != 0) {
            made["id"] = rarely() ? json(nullptr) : json(below(4));
        }
        if (below(2) != 0) {
            made["status"] = object([this] { return below(2) != 0 ? "active" : "netns"; },
                                    [] { return nullptr; });
            if (made["status"].is_object() && below(2) != 0) {
                made["status"]["active"] = flag();
                made["status"]["netns"] = below(2) != 0 ? "default" : "ns-red";
            }
        }
        return made;
    }

    json device() {
        json made = json::object();
        if (below(2) != 0) {
            made["running"] = flag();
        }
        if (rarely()) {
            made["device"] = below(2) != 0 ? json("et9") : json(nullptr);
        }
        return made;
    }

    json virtualIps() {
        json made = json::object();
        made["ipv4"] = byVrf([this] {
            return object([this] { return address(); },
                          [this] { return flagsOf([this] { return intf(); }); });
        });
        made["ipv6"] = byVrf([this] {
            return object([this] { return address6(); },
                          [this] { return flagsOf([this] { return intf(); }); });
        });
        if (rarely()) {
            made["subnetRoutes"] = flag();
        }
        return made;
    }

    json leaks() {
        json made = json::object();
        made["ipv4"] = byVrf([this] {
            return object([this] { return "10." + std::to_string(below(2)) + ".0.0/16"; },
                          [this] { return flagsOf([this] { return vrf(); }); });
        });
        made["ipv6"] = byVrf([this] {
            return object([this] { return address6() + "/128"; },
                          [this] { return flagsOf([this] { return vrf(); }); });
        });
        return made;
    }

    void part(json& patch) {
        if (rarely() && rarely()) {
            patch[std::array{"vrfs", "ipv4", "ipv6", "kernel", "virtualIps", "leaks"}[below(6)]] =
                nullptr;
            return;
        }
        switch (below(8)) {
        case 0:
        case 1:
            patch["vrfs"] = byVrf([this] { return vrfEntry(); });
            break;
        case 2:
            patch["ipv4"] = byVrf([this] { return byIntf([this] { return ipv4Interface(); }); });
            break;
        case 3:
            patch["ipv6"] = byVrf([this] {
                return byIntf([this] { return flagsOf([this] { return address6() + "/64"; }); });
            });
            break;
        case 4:
            patch["kernel"] = object([this] { return below(2) != 0 ? "default" : "ns-red"; },
                                     [this] { return byIntf([this] { return device(); }); });
            break;
        case 5:
            patch["virtualIps"] = virtualIps();
            break;
        case 6:
            patch["leaks"] = leaks();
            break;
        default:
            patch["ribWaits"] = flagsOf([this] { return vrf(); });
            patch["startReadyVerification"] = flag();
        }
    }

    std::mt19937 engine_;
};

TEST(DeviceInputs, PatchesLeadWhereTheMergedDocumentLeads) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        RandomPatch random(seed);
        const auto inputs = makeInputs();
        json document = json::object();
        for (int step = 0; step < 60; ++step) {
            const json patch = random.next();
            const std::string before = dump(*inputs);
            try {
                patchWith(*inputs, patch);
            } catch (const DocumentError& error) { // two VRFs with one id
                ASSERT_EQ(dump(*inputs), before) << "seed " << seed << ' ' << patch;
                continue;
            }
            document.merge_patch(patch);
            const auto atOnce = makeInputs();
            patchWith(*atOnce, document);
            ASSERT_EQ(dump(*inputs), dump(*atOnce))
                << "seed " << seed << " step " << step << ' ' << patch << "\n"
                << document;
        }
        patchWith(*inputs, R"({"vrfs":null,"kernel":null,"ipv4":null,"ipv6":null,"virtualIps":null,
                           "leaks":null,"ribWaits":null,"startReadyVerification":null})");
        EXPECT_EQ(dump(*inputs), dump(*makeInputs())) << "seed " << seed;
    }
}

/// Looks at an interface whenever anything of it changes.
class RoleWatch : public Orb::NotifieeOf<Ip::IpIntfStatus> {
  public:
    explicit RoleWatch(Ip::IpIntfStatus* status) {
        hasNotificationActiveIs(true);
        notifierIs(Orb::Ptr<const Ip::IpIntfStatus>(status));
    }
    void onAttribute(Orb::AttributeId, const void*) override {
        ++changes;
        const auto& status = *notifier();
        EXPECT_FALSE(status.activeSecondaryWithMask().contains(status.activeAddrWithMask()));
    }
    int changes = 0;
};

TEST(DeviceInputs, AnAddressNeverHasTwoRolesNotEvenForAMoment) {
    const auto inputs = makeInputs();
    patchWith(*inputs, R"({"ipv4":{"default":{"e":{"address":"10.0.0.1/24"}}}})");
    Ip::IpIntfStatus* status = inputs->ipStatus()
                                   ->vrfIpIntfStatus(L3::VrfName("default"))
                                   ->ipIntfStatus(Lanx::IntfId("e"));
    RoleWatch watch(status);
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
        patchWith(*inputs, std::string(R"({"ipv4":{"default":{"e":)")
                               .append(step.patch + std::string("}}}"))
                               .c_str());
        std::string secondaries;
        for (const auto& entry : status->activeSecondaryWithMask()) {
            secondaries += entry.key().toString() + ' ';
        }
        EXPECT_EQ(status->activeAddrWithMask().toString(), step.primary) << step.patch;
        EXPECT_EQ(secondaries, step.secondaries) << step.patch;
    }
}

TEST(DeviceInputs, ManySecondariesOneAtATimeAreToldOnceEach) {
    constexpr int count = 20000;
    const auto inputs = makeInputs();
    patchWith(*inputs, R"({"ipv4":{"default":{"e":{}}}})");
    RoleWatch watch(inputs->ipStatus()
                        ->vrfIpIntfStatus(L3::VrfName("default"))
                        ->ipIntfStatus(Lanx::IntfId("e")));
    for (int index = 1; index <= count; ++index) {
        const std::string address =
            Lanx::IpAddr(0x0a000000U + static_cast<unsigned>(index)).toString();
        patchWith(
            *inputs,
            json{{"ipv4", {{"default", {{"e", {{"secondary", {{address + "/8", true}}}}}}}}}});
    }
    EXPECT_EQ(watch.changes, count);
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
    patchWith(*inputs, R"({"vrfs":{"red":{"id":1},"blue":{"id":2}},
                       "leaks":{"ipv4":{"red":{"10.0.0.0/8":{"blue":true}}}}})");
    IdWatch watch(inputs->vrfs().nameToIdMapWrapper()->nameToIdMap());
    patchWith(*inputs, R"({"vrfs":{"red":{"id":2},"blue":{"id":1}}})");
    EXPECT_EQ(watch.log, "-blue -red +blue +red ");

    const auto* leaks = dynamic_cast<const Routing::DirectNetLeakStatus*>(
        inputs->entityManager()->entity("routing/directNetLeakStatus"));
    using Vrf::VrfIdMap::VrfId;
    ASSERT_EQ(leaks->leakedRouteBySourceVrf().size(), 1U);
    EXPECT_TRUE(leaks->leakedRouteBySourceVrf(VrfId(2))->leaks(
        Lanx::IpPrefix::fromString("10.0.0.0/8"), VrfId(1)));

    const std::string before = dump(*inputs);
    for (const char* patch :
         {R"({"ribWaits":{"red":true},"vrfs":{"red":{"id":1}}})",
          R"({"ribWaits":{"red":true},"vrfs":{"black":{"id":7},"white":{"id":7}}})"}) {
        EXPECT_THROW(patchWith(*inputs, patch), DocumentError) << patch;
        EXPECT_EQ(dump(*inputs), before) << patch;
    }
}

TEST(DeviceInputs, GracefulRestartStaysWhatItWasAtTheStart) {
    const auto inputs = makeInputs(true);
    patchWith(*inputs, R"({"gracefulRestart":true})");
    EXPECT_THROW(patchWith(*inputs, R"({"gracefulRestart":null})"), DocumentError);
    EXPECT_TRUE(inputs->grState()->gracefulRestart());
}

} // namespace
} // namespace Agent
