// Reads arbitrary text as each type that has a text form, the first byte choosing which. What can
// be read must print as a text that reads back as the same value.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "directnet/backlog/IntfIdAndAddr.h"
#include "directnet/backlog/IntfIdAndPrefix.h"
#include "directnet/backlog/RouteKinds.h"
#include "platform/lanx/NamespaceName.h"
#include "platform/routing/SourceVrfPrefix.h"
#include "platform/virtualip/VrfIpPair.h"
#include "platform/virtualip/VrfIpWithMaskPair.h"

namespace {

template <typename T>
bool same(const T& left, const T& right) {
    return left == right;
}

bool same(double left, double right) {
    return left == right || (std::isnan(left) && std::isnan(right));
}

template <typename T>
void tryType(std::string_view text) {
    T value{};
    try {
        value = Orb::valueFromStrep<T>(text);
    } catch (const Orb::Error&) {
        return; // not a text of this type
    }
    if (!same(Orb::valueFromStrep<T>(Orb::valueToStrep(value)), value)) {
        std::abort();
    }
}

template <typename... T>
void tryOneOf(std::size_t choice, std::string_view text) {
    using Try = void (*)(std::string_view);
    static constexpr Try tries[] = {&tryType<T>...};
    tries[choice % sizeof...(T)](text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    tryOneOf<bool, std::int64_t, std::uint8_t, double, std::string, Lanx::AddressFamily,
             Lanx::IpAddr, Lanx::Ip6Addr, Lanx::IpGenAddr, Lanx::IpAddrWithMask,
             Lanx::Ip6AddrWithMask, Lanx::IpGenAddrWithMask, Lanx::IpPrefix, Lanx::Ip6Prefix,
             Lanx::IpGenPrefix, Lanx::IntfId, Lanx::NamespaceName, L3::VrfName,
             Vrf::VrfIdMap::VrfId, Routing::Rib::ViaSetKey, Routing::SourceVrfPrefix,
             VirtualIp::VrfIpPair, VirtualIp::VrfIpWithMaskPair,
             Routing::DirectNet::IntfIdAndPrefix, Routing::DirectNet::IntfIdAndAddr,
             Routing::DirectNet::IntfViaSetKey>(data[0], text);
    return 0;
}
