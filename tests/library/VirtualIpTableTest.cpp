#include <vector>

#include "platform/ringlog/TraceHandle.h"
#include "tests/library/VirtualIpFixture.h"

namespace Routing::DirectNet {
namespace {

template <typename Family>
class VirtualIpTableTest : public VirtualIpFixture<Family> {
  protected:
    VirtualIpTableTest() {
        Ringlog::TraceHandle::sinkIs([this](std::string_view line) {
            // Only the rule's own messages, less what stands before the text.
            constexpr std::string_view rule = "[maybeDeleteVrfVirtualIpStatusT] ";
            if (const auto at = line.find(rule); at != std::string_view::npos) {
                traced.emplace_back(line.substr(at + rule.size()));
            }
        });
    }
    ~VirtualIpTableTest() override {
        Ringlog::TraceHandle::levelOfAllIs(Ringlog::TraceHandle::off);
        Ringlog::TraceHandle::sinkIs({});
    }

    std::vector<std::string> traced;
};

using Families = testing::Types<VirtualIpFamily4, VirtualIpFamily6>;
TYPED_TEST_SUITE(VirtualIpTableTest, Families);

TYPED_TEST(VirtualIpTableTest, tableGoesWhileItIsNeededOrStaysWhenItIsNot) {
    using Lines = std::vector<std::string>;
    enum Table { none, empty, populated };
    const Lines kept[] = {{"At least one virtual IP present in VRF "},
                          {"No virtual IPs present in VRF "},
                          {"At least one virtual IP present in VRF "}};
    const struct {
        const char* vrf;
        bool hasId;
        bool hasLocal;
        Ip::VrfState state;
        std::string verdict;
        bool gone;
    } cases[] = {
        {"blue", false, true, Ip::VrfState::active,
         "VRF name to ID map has been deleted for VRF blue", true},
        {"default", false, true, Ip::VrfState::active,
         "VRF name to ID map has been deleted for VRF default", true},
        {"default", true, false, {}, "ContainerSm is present for VRF default", false},
        {"default", true, true, Ip::VrfState::deleting, "ContainerSm is present for VRF default",
         false},
        {"blue", true, false, {}, "allVrfStatusLocal missing for VRF blue", true},
        {"blue", true, true, Ip::VrfState::initializing,
         "allVrfStatusLocal not active for VRF blue state 0", true},
        {"blue", true, true, Ip::VrfState::deleting,
         "allVrfStatusLocal not active for VRF blue state 2", true},
        {"blue", true, true, Ip::VrfState::active, "ContainerSm is present for VRF blue", false},
    };
    for (const auto& c : cases) {
        this->wrapper->nameToIdMap()->vrfIdDel(c.vrf);
        this->locals->vrfDel(c.vrf);
        if (c.hasId) {
            this->wrapper->nameToIdMap()->vrfIdIs(c.vrf, Vrf::VrfIdMap::VrfId(7));
        }
        if (c.hasLocal) {
            this->locals->vrfIs(c.vrf)->stateIs(c.state);
        }
        for (const Table table : {none, empty, populated}) {
            this->tables->vrfVirtualIpStatusDel(c.vrf);
            if (table != none) {
                this->helper->findOrCreateVrfVirtualIpStatus(c.vrf);
            }
            if (table == populated) {
                this->tables->vrfVirtualIpStatus(c.vrf)->virtualIpIs(
                    Orb::makePtr<typename TypeParam::Entry>(typename TypeParam::Entry::Arguments{
                        TypeParam::key(c.vrf, TypeParam::addressWithMask)}));
            }
            this->traced.clear();
            Ringlog::TraceHandle::levelOfAllIs(9);
            this->helper->maybeDeleteVrfVirtualIpStatus(c.vrf);
            Ringlog::TraceHandle::levelOfAllIs(Ringlog::TraceHandle::off);

            Lines expected{c.verdict, kept[table][0] + c.vrf};
            if (table == empty && c.gone) {
                expected.push_back(std::string("Delete VrfVirtualIpStatus for VRF ") + c.vrf);
            }
            EXPECT_EQ(this->traced, expected);
            EXPECT_EQ(this->tables->vrfVirtualIpStatus(c.vrf) != nullptr,
                      table == populated || (table == empty && !c.gone))
                << c.verdict << table;
        }
    }
}

TYPED_TEST(VirtualIpTableTest, lastOfVirtualAddressAndContainerLeavesTheTable) {
    const auto key = TypeParam::key("blue", TypeParam::addressWithMask);
    TypeParam::add(*this->platform, key);
    ASSERT_NE(this->tables->vrfVirtualIpStatus("blue"), nullptr);
    TypeParam::remove(*this->platform, key);
    EXPECT_EQ(this->tables->vrfVirtualIpStatus("blue"), nullptr) << "no container";

    this->liveIs("blue");
    TypeParam::add(*this->platform, key);
    TypeParam::remove(*this->platform, key);
    EXPECT_NE(this->tables->vrfVirtualIpStatus("blue"), nullptr) << "the container watches it";
    this->wrapper->nameToIdMap()->vrfIdDel("blue");
    this->statusSm->handleVirtualIpStatus(key); // of an address that never was
    EXPECT_EQ(this->tables->vrfVirtualIpStatus("blue"), nullptr);
}

TYPED_TEST(VirtualIpTableTest, addressFromBeforeTheMachineIsMissed) {
    this->statusSm = nullptr;
    auto* entry =
        TypeParam::add(*this->platform, TypeParam::key("red", TypeParam::addressWithMask));
    this->statusSm = Orb::makePtr<typename TypeParam::StatusSm>(
        typename TypeParam::StatusSm::Arguments{this->platform, this->helper});
    EXPECT_EQ(this->tables->vrfVirtualIpStatus("red")->virtualIp(entry->fwkKey()), entry);
}

TYPED_TEST(VirtualIpTableTest, nullVirtualIpIsTaken) {
    const auto table = this->helper->findOrCreateVrfVirtualIpStatus("red");
    const std::string type(TypeParam::Tables::orbTypeName);
    const std::string expected = "null _virtualIp parameter to mutator for "
                                 + type.substr(0, type.rfind(':') + 1)
                                 + "VrfVirtualIpStatus::virtualIp not allowed\"";
    try {
        table->virtualIpIs(nullptr);
        FAIL();
    } catch (const Orb::NullArgumentError& error) {
        EXPECT_EQ(error.what(), expected);
    }
    EXPECT_TRUE(table->virtualIp().empty());
}

class VirtualIpSubnetFlagTest : public VirtualIpFixture<VirtualIpFamily4> {};

TEST_F(VirtualIpSubnetFlagTest, tableMissesTheSettingByItsAge) {
    helper->findOrCreateVrfVirtualIpStatus("red"); // an empty one
    platform->subnetRoutesIs(true);
    EXPECT_TRUE(tables->vrfVirtualIpStatus("red")->subnetRouteEnabled());
    VirtualIpFamily4::add(*platform, VirtualIpFamily4::key("blue", "10.1.1.1/24"));
    EXPECT_TRUE(tables->vrfVirtualIpStatus("blue")->subnetRouteEnabled());
    platform->subnetRoutesIs(false);
    EXPECT_FALSE(tables->vrfVirtualIpStatus("blue")->subnetRouteEnabled());
}

class VirtualIp6SubnetFlagTest : public VirtualIpFixture<VirtualIpFamily6> {};

TEST_F(VirtualIp6SubnetFlagTest, settingReachesATable) {
    helper->findOrCreateVrfVirtualIpStatus("red");
    statusSm->subnetRouteEnabledIs(true);
    statusSm->handleSubnetRoutes();
    VirtualIpFamily6::add(*platform, VirtualIpFamily6::key("blue", "2001:db8::9"));
    EXPECT_FALSE(tables->vrfVirtualIpStatus("red")->subnetRouteEnabled());
    EXPECT_FALSE(tables->vrfVirtualIpStatus("blue")->subnetRouteEnabled());
}

} // namespace
} // namespace Routing::DirectNet
