#include "tests/agent/RandomPatches.h"

namespace TestSupport {

using nlohmann::json;

std::vector<RandomPatches::Place> RandomPatches::placesOfASmallWorld() {
    const std::vector<std::string> vrf{"default", "red", "blue"};
    const std::vector<std::string> netns{"default", "ns-red"};
    const std::vector<std::string> intf{"e1", "e2", "Loopback0"};
    const std::vector<std::string> address{"10.0.0.1/24", "10.0.0.2/24", "10.0.1.1/24"};
    const std::vector<std::string> prefix{"10.0.0.0/16", "10.1.0.0/16"};
    const std::vector<std::string> prefix6{"2001:db8::1/128", "2001:db8::2/128"};
    const std::vector<json> flag{true, true, false};
    return {{{{"vrfs"}, vrf, {"id"}}, {0U, 1U, 2U, 3U}},
            {{{"vrfs"}, vrf, {"status"}}, {json::object()}},
            {{{"vrfs"}, vrf, {"status"}, {"active"}}, flag},
            {{{"vrfs"}, vrf, {"status"}, {"netns"}}, {"default", "ns-red"}},
            {{{"kernel"}, netns, intf}, {json::object()}},
            {{{"kernel"}, netns, intf, {"running"}}, flag},
            {{{"kernel"}, netns, intf, {"device"}}, {"et9"}},
            {{{"ipv4"}, vrf, intf, {"address"}}, {address[0], address[1]}},
            {{{"ipv4"}, vrf, intf, {"secondary"}, address}, flag},
            {{{"ipv4"}, vrf, intf, {"unnumbered"}}, {"Loopback0"}},
            {{{"ipv4"}, vrf, intf, {"directedBroadcast"}}, flag},
            {{{"ipv6"}, vrf, intf}, {json::object()}},
            {{{"ipv6"}, vrf, intf, {"2001:db8::1/64", "2001:db8::2/64"}}, flag},
            {{{"virtualIps"}, {"ipv4"}, vrf, address, intf}, flag},
            {{{"virtualIps"}, {"ipv6"}, vrf, {"2001:db8::1"}, intf}, flag},
            {{{"virtualIps"}, {"subnetRoutes"}}, flag},
            {{{"leaks"}, {"ipv4"}, vrf, prefix, vrf}, flag},
            {{{"leaks"}, {"ipv6"}, vrf, prefix6, vrf}, flag},
            {{{"ribWaits"}, vrf}, flag},
            {{{"startReadyVerification"}}, flag}};
}

RandomPatches::RandomPatches(unsigned seed) : engine_(seed) {}

json RandomPatches::next(const std::string& section, const std::set<std::string>& without) {
    json patch = json::object();
    for (auto count = 1 + below(6); count > 0;) {
        const Place& place = oneOf(places_);
        if ((!section.empty() && place.keys.front()[0] != section)
            || without.contains(place.keys.back()[0])) {
            continue;
        }
        --count;
        const bool removal = below(6) == 0;
        const auto depth = removal ? 1 + below(place.keys.size()) : place.keys.size();
        json* at = &patch;
        for (std::size_t key = 0; key < depth; ++key) {
            at = &(*at)[oneOf(place.keys[key])];
        }
        *at = removal ? json() : oneOf(place.values);
    }
    return patch;
}

} // namespace TestSupport
