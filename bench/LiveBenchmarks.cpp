// The live road: what the kernel says goes in as bytes, written routes come out. There is no kernel
// in it; messages are taken in batches, as a live agent reads them.
//
//   LiveAdd/N      N links come and get four addresses each, two of either family
//   LiveDelete/N   the addresses go again
//   LiveDown/N     the links go down and keep their addresses
//   LiveUp/N       the links come up again
//
// Counters:
//   us_per_address   CPU time of the road, drains included, per address; the median of several
//                    processes
//   routes           that were written or deleted

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <linux/if.h>
#include <linux/rtnetlink.h>
#include <string>
#include <vector>

#include "agent/device/AgentRoot.h"
#include "agent/linux/NamespaceView.h"
#include "bench/Measure.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"

namespace Bench {

namespace {

/// Netlink messages one behind the other, as a socket gives them.
class KernelMessages {
  public:
    void addLink(int index, bool isUp) {
        ifinfomsg body{};
        body.ifi_index = index;
        body.ifi_flags = isUp ? IFF_UP | IFF_RUNNING | IFF_LOWER_UP : 0;
        begin(RTM_NEWLINK, body);
        const std::string name = "veth" + std::to_string(index);
        const std::uint32_t mtu = 1500;
        append(IFLA_IFNAME, name.c_str(), name.size() + 1);
        append(IFLA_MTU, &mtu, sizeof mtu);
        end();
    }

    /// The link's four addresses.
    void addAddresses(int index, int type) {
        const auto high = static_cast<std::uint8_t>(index >> 8);
        const auto low = static_cast<std::uint8_t>(index);
        for (const std::uint8_t net : {std::uint8_t{10}, std::uint8_t{11}}) {
            addAddress(index, type, AF_INET, 24, {net, high, low, 1});
            addAddress(index, type, AF_INET6, 64,
                       {0x20, 1, 0xd, 0xb8, net, 0, high, low, 0, 0, 0, 0, 0, 0, 0, 1});
        }
    }

    /// Calls `visit` with each message's header.
    template <typename Visit>
    void forEach(Visit visit) const {
        for (std::size_t at = 0; at < bytes_.size();) {
            const auto& header = *reinterpret_cast<const nlmsghdr*>(bytes_.data() + at);
            visit(header);
            at += NLMSG_ALIGN(header.nlmsg_len);
        }
    }

  private:
    void addAddress(int index, int type, int family, int length,
                    const std::vector<std::uint8_t>& address) {
        ifaddrmsg body{};
        body.ifa_family = static_cast<std::uint8_t>(family);
        body.ifa_prefixlen = static_cast<std::uint8_t>(length);
        body.ifa_index = static_cast<std::uint32_t>(index);
        const std::uint32_t flags = 0;
        begin(type, body);
        append(IFA_ADDRESS, address.data(), address.size());
        append(IFA_LOCAL, address.data(), address.size());
        append(IFA_FLAGS, &flags, sizeof flags);
        end();
    }

    template <typename Body>
    void begin(int type, const Body& body) {
        begun_ = bytes_.size();
        nlmsghdr header{};
        header.nlmsg_type = static_cast<std::uint16_t>(type);
        append(&header, sizeof header);
        append(&body, sizeof body);
    }

    void append(int type, const void* data, std::size_t size) {
        const nlattr attribute{static_cast<std::uint16_t>(sizeof(nlattr) + size),
                               static_cast<std::uint16_t>(type)};
        append(&attribute, sizeof attribute);
        append(data, size);
    }

    void append(const void* data, std::size_t size) {
        const auto* from = static_cast<const char*>(data);
        bytes_.insert(bytes_.end(), from, from + size);
        bytes_.resize(NLMSG_ALIGN(bytes_.size()));
    }

    void end() {
        auto& header = *reinterpret_cast<nlmsghdr*>(bytes_.data() + begun_);
        header.nlmsg_len = static_cast<std::uint32_t>(bytes_.size() - begun_);
    }

    std::vector<char> bytes_;
    std::size_t begun_ = 0;
};

/// A live agent without its sockets: the default VRF, fed with kernel messages.
class LiveRig {
  public:
    LiveRig() {
        Agent::DevicePatch patch;
        patch.vrfs.make()[L3::VrfName::defaultVrf()].make().id.make() = Vrf::VrfIdMap::VrfId(0);
        inputs_.apply(patch);
    }

    /// Takes the messages in and runs the agent until it is at rest.
    void feed(const KernelMessages& messages) {
        constexpr int batch = 256;
        int taken = 0;
        messages.forEach([&](const nlmsghdr& header) {
            take(header);
            if (++taken % batch == 0) {
                publish();
            }
        });
        publish();
        activityManager_.runUntilIdle(longest);
    }

    std::size_t routes() const {
        return root_->ipv4AllVrfRouteConfig()->size() + root_->ipv6AllVrfRouteConfig()->size();
    }

  private:
    static constexpr double longest = 3600; // simulated seconds

    // What only a listing could tell is no matter here.
    void take(const nlmsghdr& header) {
        const auto message = Agent::Linux::parseRouteMessage(header);
        std::visit([this](const auto& known) { static_cast<void>(view_.apply(known)); }, *message);
    }

    void publish() { inputs_.apply(view_.takePatch()); }

    Orb::Ptr<Orb::Clock> clock_ = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager activityManager_{clock_};
    Agent::DeviceInputs inputs_{Orb::makePtr<Kiln::TaskScheduler>(clock_), false};
    Agent::AgentRoot root_{inputs_};
    Agent::Linux::NamespaceView view_{"default", "default"};
};

constexpr int addressesPerLink = 4;

/// Messages about links 1 to `links`, as `say` makes them.
template <typename Say>
KernelMessages aboutAll(int links, Say say) {
    KernelMessages messages;
    for (int link = 1; link <= links; ++link) {
        say(messages, link);
    }
    return messages;
}

KernelMessages additions(int links) {
    return aboutAll(links, [](KernelMessages& messages, int link) {
        messages.addLink(link, true);
        messages.addAddresses(link, RTM_NEWADDR);
    });
}

KernelMessages deletions(int links) {
    return aboutAll(links, [](KernelMessages& messages, int link) {
        messages.addAddresses(link, RTM_DELADDR);
    });
}

KernelMessages states(int links, bool areUp) {
    return aboutAll(links,
                    [areUp](KernelMessages& messages, int link) { messages.addLink(link, areUp); });
}

/// Measures what `subject` costs after `before`, messages in turn, have been taken in.
void measure(benchmark::State& state, const std::vector<KernelMessages>& before,
             const KernelMessages& subject) {
    constexpr int runs = 9;
    for (auto iteration : state) {
        const Result result = medianOf(runs, [&] {
            LiveRig rig;
            for (const KernelMessages& messages : before) {
                rig.feed(messages);
            }
            const std::size_t routes = rig.routes();
            const double start = cpuSeconds();
            rig.feed(subject);
            Result road;
            road.cpu = cpuSeconds() - start;
            road.bareCpu = 1; // nothing to compare with
            road.routes = std::max(routes, rig.routes()) - std::min(routes, rig.routes());
            return road;
        });
        const auto addresses = static_cast<double>(state.range(0)) * addressesPerLink;
        state.SetIterationTime(result.cpu);
        state.counters["routes"] = static_cast<double>(result.routes);
        state.counters["us_per_address"] = result.cpu * 1e6 / addresses;
    }
}

int linksOf(const benchmark::State& state) { return static_cast<int>(state.range(0)); }

void LiveAdd(benchmark::State& state) { measure(state, {}, additions(linksOf(state))); }

void LiveDelete(benchmark::State& state) {
    const int links = linksOf(state);
    measure(state, {additions(links)}, deletions(links));
}

void LiveDown(benchmark::State& state) {
    const int links = linksOf(state);
    measure(state, {additions(links)}, states(links, false));
}

void LiveUp(benchmark::State& state) {
    const int links = linksOf(state);
    measure(state, {additions(links), states(links, false)}, states(links, true));
}

void size(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(LiveAdd)->Apply(size);
BENCHMARK(LiveDelete)->Apply(size);
BENCHMARK(LiveDown)->Apply(size);
BENCHMARK(LiveUp)->Apply(size);

} // namespace

} // namespace Bench
