#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "directnet/root/RootSm.h"
#include "platform/orb/attribute/TypeRegistry.h"
#include "platform/orb/object/TypeNode.h"

namespace Routing::DirectNet {
namespace {

TEST(RegistrationTest, TypesAreRegisteredInTheStatedOrder) {
    ASSERT_NE(&RootSm::fwkType(), nullptr);
    std::string names;
    const std::string prefix = "Routing::DirectNet::";
    for (const Orb::TypeNode* type : Orb::TypeRegistry::instance().typeNodes()) {
        if (type->name().starts_with(prefix)) {
            names.append(type->name().substr(prefix.size())).append(" ");
        }
    }
    EXPECT_EQ(names, "VrfIp6IntfStatusSm VrfIpIntfStatusSm Ip6IntfSm VrfNameSet RootSm "
                     "RootSm::VrfStatusLocalSm Ip6IntfStatusSm IpIntfStatusSm IpIntfSm "
                     "KernelIntfStatus ContainerSm Ipv6::VrfVirtualIpStatusHelper "
                     "Ipv6::VrfVirtualIpStatus Ipv6::AllVrfVirtualIpStatus "
                     "Ipv4::VrfVirtualIpStatusHelper Ipv4::VrfVirtualIpStatus "
                     "Ipv4::AllVrfVirtualIpStatus Ipv6::VrfVirtualIpStatusSm "
                     "Ipv4::VrfVirtualIpStatusSm Ipv6::VirtualIpStatusSm Ipv4::VirtualIpStatusSm "
                     "IntfIdAndPrefix IntfViaSetKey IntfBacklog IntfBacklogByVrf IntfViaSetConfig "
                     "IntfIdAndAddr IntfIdSet IntfViaSetKeyStatus IntfBacklogSm "
                     "ReceiveRouteLeakSm AllVrfRibReadySm GrState AllVrfReadyStatus "
                     "VrfReadyStatus ");
}

// Constructor attributes take the first ids; ids that are stated are those of their attributes.
TEST(RegistrationTest, AttributesAreDescribedInTheirOrder) {
    const auto& attributes = ContainerSm::fwkType().attributes();
    ASSERT_GT(attributes.size(), 21U);
    for (const auto& [at, name] : {std::pair(0U, "entityManager"), {20U, "vrfReadyStatus"}}) {
        EXPECT_EQ(attributes[at].id, 258 + at);
        EXPECT_EQ(attributes[at].name, name);
    }
    EXPECT_EQ(Vrf::VrfIdMap::NameToIdMapWrapper::generationAttribute, 258U);
    EXPECT_EQ(Vrf::VrfIdMap::NameToIdMap::vrfIdAttribute, 258U);
    EXPECT_EQ(Ip::AllVrfStatusLocal::vrfAttribute, 258U);
    EXPECT_EQ(Ip::VrfStatusLocal::stateAttribute, 259U);
}

} // namespace
} // namespace Routing::DirectNet
