#include "platform/lanx/NamespaceName.h"
#include "platform/routing/MetricPref.h"
#include "platform/routing/RouteKey.h"
#include "platform/routing/RouteType.h"
#include "platform/routing/SourceVrfPrefix.h"
#include "platform/routing/ViaKey.h"
#include "platform/routing/ViaSetKey.h"
#include "platform/virtualip/VrfIpPair.h"
#include "platform/virtualip/VrfIpWithMaskPair.h"
#include "tests/support/ValueProperties.h"

namespace TestSupport {

namespace {

using Names = testing::Types<Lanx::IntfId, Lanx::NamespaceName, L3::VrfName, std::string>;
using Addresses =
    testing::Types<Lanx::AddressFamily, Lanx::IpAddr, Lanx::Ip6Addr, Lanx::IpGenAddr,
                   Lanx::IpAddrWithMask, Lanx::Ip6AddrWithMask, Lanx::IpGenAddrWithMask,
                   Lanx::IpPrefix, Lanx::Ip6Prefix, Lanx::IpGenPrefix>;
using Numbers =
    testing::Types<bool, std::uint8_t, std::int64_t, std::uint64_t, Vrf::VrfIdMap::VrfId,
                   Routing::Rib::ViaSetKey, Routing::Fib::RouteType>;
using Composites =
    testing::Types<Routing::MetricPref, Routing::Rib::RouteKey, Routing::Rib::ViaKey,
                   Routing::SourceVrfPrefix, VirtualIp::VrfIpPair, VirtualIp::VrfIpWithMaskPair>;

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Name, ValueProperties, Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Address, ValueProperties, Addresses);
INSTANTIATE_TYPED_TEST_SUITE_P(Number, ValueProperties, Numbers);
INSTANTIATE_TYPED_TEST_SUITE_P(Composite, ValueProperties, Composites);

} // namespace TestSupport
