#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "directnet/virtualip/VirtualIpStatusSm.h"
#include "directnet/virtualip/VrfVirtualIpStatusSm.h"

namespace Routing::DirectNet {

/// What differs between the families' tests.
struct VirtualIpFamily4 {
    using Platform = VirtualIp::VirtualIpStatus;
    using Entry = VirtualIp::VirtualIpIntfStatus;
    using Tables = Ipv4::AllVrfVirtualIpStatus;
    using Helper = Ipv4::VrfVirtualIpStatusHelper;
    using StatusSm = Ipv4::VirtualIpStatusSm;
    using Sm = Ipv4::VrfVirtualIpStatusSm;
    static constexpr const char* addressWithMask = "10.1.1.1/24";

    static VirtualIp::VrfIpWithMaskPair key(const char* vrf, const std::string& address) {
        return {vrf, Lanx::IpAddrWithMask::fromString(address)};
    }
    static Entry* add(Platform& status, const VirtualIp::VrfIpWithMaskPair& key) {
        return status.virtualIpIntfStatusIs(key);
    }
    static void remove(Platform& status, const VirtualIp::VrfIpWithMaskPair& key) {
        status.virtualIpIntfStatusDel(key);
    }
};

struct VirtualIpFamily6 {
    using Platform = VirtualIp::VirtualIp6Status;
    using Entry = VirtualIp::VirtualIp6IntfStatus;
    using Tables = Ipv6::AllVrfVirtualIpStatus;
    using Helper = Ipv6::VrfVirtualIpStatusHelper;
    using StatusSm = Ipv6::VirtualIpStatusSm;
    using Sm = Ipv6::VrfVirtualIpStatusSm;
    static constexpr const char* addressWithMask = "2001:db8::9";

    static VirtualIp::VrfIpPair key(const char* vrf, const std::string& address) {
        return {vrf, Lanx::Ip6Addr::fromString(address)};
    }
    static Entry* add(Platform& status, const VirtualIp::VrfIpPair& key) {
        return status.virtualIp6IntfStatusIs(key);
    }
    static void remove(Platform& status, const VirtualIp::VrfIpPair& key) {
        status.virtualIp6IntfStatusDel(key);
    }
};

/// The platform's virtual addresses, the tables and the machine that sorts, and on demand the
/// machine of VRF "red", whose contributors stand in `backlog`.
template <typename Family>
class VirtualIpFixture : public testing::Test {
  protected:
    VirtualIpFixture() {
        wrapper->nameToIdMapIs(Orb::makePtr<Vrf::VrfIdMap::NameToIdMap>());
        liveIs("default");
        liveIs("red");
        statusSm = Orb::makePtr<typename Family::StatusSm>(
            typename Family::StatusSm::Arguments{platform, helper});
    }

    void liveIs(const char* vrf) {
        wrapper->nameToIdMap()->vrfIdIs(vrf, Vrf::VrfIdMap::VrfId(5));
        locals->vrfIs(vrf)->stateIs(Ip::VrfState::active);
    }

    /// As the VRF's container does.
    void startVrf() {
        sm = Orb::makePtr<typename Family::Sm>(typename Family::Sm::Arguments{
            helper->findOrCreateVrfVirtualIpStatus("red"), viaSets, backlog});
    }
    void stopVrf() {
        sm->orbDoZombieReactors(true);
        sm = nullptr;
    }

    void carry(const char* address, const char* intf, bool carried = true) {
        Family::add(*platform, key(address))->intfIdIs(Lanx::IntfId(intf), carried);
    }
    void uncarry(const char* address, const char* intf) {
        Family::add(*platform, key(address))->intfIdDel(Lanx::IntfId(intf));
    }
    void remove(const char* address) { Family::remove(*platform, key(address)); }
    static auto key(const char* address) { return Family::key("red", address); }

    /// "PREFIX/TYPE INTERFACE" of every contributor, by prefix.
    std::string contributors() const {
        std::map<Lanx::IpGenPrefix, std::string> lines;
        for (const auto& set : backlog->intfIdsByPrefix()) {
            std::ostringstream line;
            for (const auto& [contributor, viaSetKey] : set->intfIdAndAddr()) {
                EXPECT_TRUE(contributor.isVirtual());
                EXPECT_EQ(contributor.sourceVrfId().value(), 16777215U);
                EXPECT_NE(viaSetCollection().viaSet(viaSetKey), nullptr) << set->genPrefix();
                line << set->genPrefix() << ' ' << contributor.routeType() << ' '
                     << contributor.intfId().name() << '\n';
            }
            lines[set->genPrefix()] = line.str();
        }
        std::string all;
        for (const auto& [prefix, line] : lines) {
            all += line;
        }
        return all;
    }

    Rib::Memtab::ViaSetCollection& viaSetCollection() const {
        return *viaSetConfig->viaSetCollection();
    }

    void expectNothingLeft() const {
        EXPECT_EQ(contributors(), "");
        EXPECT_EQ(viaSetCollection().size(), 0U);
        EXPECT_EQ(vias->size(), 0U);
    }

    Orb::Ptr<typename Family::Platform> platform = Orb::makePtr<typename Family::Platform>();
    Orb::Ptr<typename Family::Tables> tables = Orb::makePtr<typename Family::Tables>();
    Orb::Ptr<Ip::AllVrfStatusLocal> locals = Orb::makePtr<Ip::AllVrfStatusLocal>();
    Orb::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper> wrapper =
        Orb::makePtr<Vrf::VrfIdMap::NameToIdMapWrapper>();
    Orb::Ptr<typename Family::Helper> helper = Orb::makePtr<typename Family::Helper>(
        typename Family::Helper::Arguments{tables, locals, wrapper});
    Orb::Ptr<typename Family::StatusSm> statusSm;

    Orb::Ptr<Rib::Ip::ViaConfig> vias = Orb::makePtr<Rib::Ip::ViaConfig>();
    Orb::Ptr<Rib::ViaSetConfig> viaSetConfig = Orb::makePtr<Rib::ViaSetConfig>();
    Orb::Ptr<IntfViaSetConfig> viaSets =
        Orb::makePtr<IntfViaSetConfig>(IntfViaSetConfig::Arguments{vias, vias, viaSetConfig});
    Orb::Ptr<IntfBacklog> backlog =
        Orb::makePtr<IntfBacklog>(IntfBacklog::Arguments{"red", Vrf::VrfIdMap::VrfId(5)});
    Orb::Ptr<typename Family::Sm> sm;
};

} // namespace Routing::DirectNet
