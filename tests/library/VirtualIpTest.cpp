#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/ringlog/TraceHandle.h"
#include "tests/support/LibraryHarness.h"

namespace Routing::DirectNet {
namespace {

TEST(VirtualIpTest, InterfacesOfAReplacedObjectAreWithdrawn) {
    LibraryHarness harness;
    harness.virtualIp("red", "10.1.1.1/24", "et1");
    harness.virtualIp("red", "10.1.1.1/24", "et2");
    harness.vrf("red", 5);
    const VirtualIp::VrfIpWithMaskPair key("red", Lanx::IpAddrWithMask::fromString("10.1.1.1/24"));
    const auto other = Orb::makePtr<VirtualIp::VirtualIpIntfStatus>(
        VirtualIp::VirtualIpIntfStatus::Arguments{key});
    other->intfIdIs(Lanx::IntfId("et2"), true);
    other->intfIdIs(Lanx::IntfId("et3"), true);
    const auto table = harness.root().allVrfVirtualIpStatus()->vrfVirtualIpStatus("red");
    table->virtualIpIs(other);
    EXPECT_ROUTES(harness, "red", {{"10.1.1.1/32", 1, "et2", "receive-virtual"}});
    EXPECT_EQ(harness.viaSets(), 8U);
    harness.virtualIp("red", "10.1.1.1/24", "et1"); // the old one is not listened to any more
    other->intfIdDel(Lanx::IntfId("et2"));
    EXPECT_ROUTES(harness, "red", {{"10.1.1.1/32", 1, "et3", "receive-virtual"}});
    table->virtualIpDel(key);
    EXPECT_ROUTES(harness, "red", {});
    EXPECT_EQ(harness.viaSets(), 0U);
}

// A subnet setting that changes while via sets are written may leave some that nobody counts.
TEST(VirtualIpTest, UncountedViaSetsGoWithTheVrf) {
    LibraryHarness harness;
    harness.vrf("red", 5);
    const ContainerSm& red = harness.container("red");
    harness.root().intfViaSetConfig()->findOrCreateViaSetKey(
        Lanx::IntfId("et1"), red.vrfId(), *red.vrfVirtualIpStatusSm()->ivskStatus());
    harness.removeVrfs();
    EXPECT_EQ(harness.leftovers(), "");
}

/// What the rule says of a VRF's table, less what stands before each text.
std::string verdictOn(const L3::VrfName& vrf, Ipv4::VrfVirtualIpStatusHelper& helper) {
    std::string traced;
    Ringlog::TraceHandle::sinkIs([&traced](std::string_view line) {
        traced.append(line.substr(line.find("] ") + 2)).append("\n");
    });
    Ringlog::TraceHandle::levelOfAllIs(9);
    helper.maybeDeleteVrfVirtualIpStatus(vrf);
    Ringlog::TraceHandle::levelOfAllIs(Ringlog::TraceHandle::off);
    Ringlog::TraceHandle::sinkIs({});
    return traced;
}

TEST(VirtualIpTableTest, TableStaysExactlyWhileItIsNeeded) {
    LibraryHarness harness(false);
    const auto tables = Orb::makePtr<Ipv4::AllVrfVirtualIpStatus>();
    const auto helper =
        Orb::makePtr<Ipv4::VrfVirtualIpStatusHelper>(Ipv4::VrfVirtualIpStatusHelper::Arguments{
            tables, harness.allVrfStatusLocal, harness.nameToIdMapWrapper});
    const struct {
        const char* vrf;
        bool hasId;
        std::optional<bool> active; ///< what the local status says, if there is one
        std::string verdict;
        bool gone;
    } cases[] = {
        {"blue", false, true, "VRF name to ID map has been deleted for VRF blue\n", true},
        {"default", false, {}, "VRF name to ID map has been deleted for VRF default\n", true},
        {"default", true, {}, "ContainerSm is present for VRF default\n", false},
        {"default", true, false, "ContainerSm is present for VRF default\n", false},
        {"blue", true, {}, "allVrfStatusLocal missing for VRF blue\n", true},
        {"blue", true, false, "allVrfStatusLocal not active for VRF blue state 0\n", true},
        {"blue", true, true, "ContainerSm is present for VRF blue\n", false},
    };
    for (const auto& [vrf, hasId, active, verdict, gone] : cases) {
        harness.removeVrfs();
        tables->vrfVirtualIpStatusDelAll();
        if (hasId) {
            harness.vrfId(vrf, 7);
        }
        if (active) {
            harness.vrfStatus(vrf, *active);
        }
        const auto line = [&, name = vrf](const char* text) {
            return std::string(text) + name + "\n";
        };
        const std::string some = verdict + line("At least one virtual IP present in VRF ");
        const std::string none = verdict + line("No virtual IPs present in VRF ");
        EXPECT_EQ(verdictOn(vrf, *helper), some) << "without a table";
        auto* table = tables->vrfVirtualIpStatusIs(vrf);
        table->virtualIpIs(Orb::makePtr<VirtualIp::VirtualIpIntfStatus>(
            VirtualIp::VirtualIpIntfStatus::Arguments{{vrf, {}}}));
        EXPECT_EQ(verdictOn(vrf, *helper), some);
        ASSERT_NE(tables->vrfVirtualIpStatus(vrf), nullptr);
        table->virtualIpDelAll();
        EXPECT_EQ(verdictOn(vrf, *helper),
                  none + (gone ? line("Delete VrfVirtualIpStatus for VRF ") : ""));
        EXPECT_EQ(tables->vrfVirtualIpStatus(vrf) == nullptr, gone) << verdict;
    }
}

} // namespace
} // namespace Routing::DirectNet
