// The workloads. N addresses are spread over 16 VRFs and 1024 interfaces each; "the road" leads
// from publication in the input entities to written routes, all drains included, on the real clock.
//
//   Burst/N       N IPv4 /24 addresses appear: 4N routes
//   Withdraw/N    the same addresses go again
//   Flap/N        one of N addresses goes and comes back
//   BurstIPv6/N   N IPv6 /64 addresses appear: 2N routes
//   VirtualIp/N   N virtual addresses appear, on 8 interfaces each: N routes
//   Leak/N        N connected prefixes are leaked into the 15 other VRFs: 15N routes
//   Teardown/N    a VRF with 4N routes goes
//
// Counters:
//   x_bare           CPU time of the road over that of writing (Withdraw: deleting) the same routes
//                    in a plain RouteConfig in the same process; the median of several processes
//   bytes_per_route  growth of resident memory over routes
//   max_call_ms      the longest single call into the agent (a drain, a review run)
//   us_per_route     CPU time of the road per route

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <vector>

#include "bench/Measure.h"
#include "bench/Rig.h"
#include "platform/orb/loop/RealClock.h"
#include "platform/orb/loop/SimulatedClock.h"

namespace Bench {

namespace {

using Routing::Rib::Route;
using Routing::Rib::RouteConfig;

std::vector<Route> routesOf(const RouteConfig& config) {
    std::vector<Route> routes;
    for (std::size_t vrf = 0; vrf < Rig::vrfs; ++vrf) {
        if (const auto* table = config.routes(Rig::vrfId(vrf))) {
            routes.insert(routes.end(), table->begin(), table->end());
        }
    }
    return routes;
}

/// CPU seconds of writing the routes to an empty table, and with `deletion` of deleting them there.
double bare(const std::vector<Route>& inTableOrder, bool deletion) {
    // In the order of their arrival, not of the table: a shuffle by a fixed stride.
    std::vector<const Route*> routes;
    constexpr std::size_t stride = 7919;
    for (std::size_t i = 0; i < inTableOrder.size(); ++i) {
        routes.push_back(&inTableOrder[i * stride % inTableOrder.size()]);
    }
    RouteConfig config;
    double start = cpuSeconds();
    for (const Route* route : routes) {
        config.routeAdd(*route);
    }
    if (deletion) {
        start = cpuSeconds();
        for (const Route* route : routes) {
            config.routeDel(route->key());
        }
    }
    return cpuSeconds() - start;
}

enum class Family { ipv4, ipv6 };

const RouteConfig& table(const Rig& rig, Family family) {
    return family == Family::ipv4 ? *rig.root()->ipv4AllVrfRouteConfig()
                                  : *rig.root()->ipv6AllVrfRouteConfig();
}

/// Runs `publish` and the drains that follow from it, after `prepare`.
template <typename Prepare, typename Publish>
Result road(Family family, Prepare prepare, Publish publish) {
    Rig rig(Orb::makePtr<Orb::RealClock>());
    prepare(rig);
    rig.settle();
    malloc_trim(0);
    const std::size_t before = table(rig, family).size();
    Result result;
    const double bytes = residentBytes();
    const double start = cpuSeconds();
    publish(rig);
    result.longestCall = rig.settle();
    result.cpu = cpuSeconds() - start;
    result.bytes = residentBytes() - bytes;
    const std::size_t after = table(rig, family).size();
    result.routes = after > before ? after - before : before - after;
    if (after > before) {
        std::vector<Route> routes = routesOf(table(rig, family));
        result.bareCpu = bare(routes, false) * static_cast<double>(result.routes)
                         / static_cast<double>(routes.size());
    }
    return result;
}

void nothing(Rig&) {}

template <typename Add>
auto each(std::size_t count, Add add) {
    return [count, add](Rig& rig) {
        for (std::size_t n = 0; n < count; ++n) {
            (rig.*add)(n);
        }
    };
}

std::size_t countOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

int runsFor(std::size_t count) { return count > 100000 ? 3 : 5; }

void report(benchmark::State& state, const Result& result) {
    const auto routes = static_cast<double>(result.routes);
    state.counters["routes"] = routes;
    state.counters["x_bare"] = result.cpu / result.bareCpu;
    state.counters["bytes_per_route"] = result.bytes / routes;
    state.counters["max_call_ms"] = result.longestCall * 1e3;
    state.counters["us_per_route"] = result.cpu * 1e6 / routes;
}

/// Runs the workload once: the repetitions are in it.
template <typename Workload>
void measure(benchmark::State& state, Workload workload) {
    for (auto iteration : state) {
        const Result result = medianOf(runsFor(countOf(state)), workload);
        state.SetIterationTime(result.cpu);
        report(state, result);
    }
}

void Burst(benchmark::State& state) {
    const std::size_t count = countOf(state);
    measure(state, [&] { return road(Family::ipv4, nothing, each(count, &Rig::addIpv4)); });
}

void Withdraw(benchmark::State& state) {
    const std::size_t count = countOf(state);
    measure(state, [&] {
        std::vector<Route> routes;
        Result result = road(
            Family::ipv4,
            [&](Rig& rig) {
                each(count, &Rig::addIpv4)(rig);
                rig.settle();
                routes = routesOf(table(rig, Family::ipv4));
            },
            each(count, &Rig::delIpv4));
        result.bareCpu = bare(routes, true);
        return result;
    });
}

void BurstIPv6(benchmark::State& state) {
    const std::size_t count = countOf(state);
    measure(state, [&] { return road(Family::ipv6, nothing, each(count, &Rig::addIpv6)); });
}

void VirtualIp(benchmark::State& state) {
    const std::size_t count = countOf(state);
    measure(state, [&] { return road(Family::ipv4, nothing, each(count, &Rig::addVirtualIp)); });
}

void Leak(benchmark::State& state) {
    const std::size_t count = countOf(state);
    measure(state, [&] {
        return road(Family::ipv4, each(count, &Rig::addIpv4), each(count, &Rig::addLeak));
    });
}

// Simulated time: what counts is the work, not the pause before a drain.
void Flap(benchmark::State& state) {
    const std::size_t count = countOf(state);
    Rig rig(Orb::makePtr<Orb::SimulatedClock>());
    each(count, &Rig::addIpv4)(rig);
    rig.settle();
    for (auto iteration : state) {
        rig.delIpv4(count / 2);
        rig.settle();
        rig.addIpv4(count / 2);
        rig.settle();
    }
}

void Teardown(benchmark::State& state) {
    const std::size_t count = countOf(state);
    for (auto iteration : state) {
        const Result result = inChild([&] {
            Rig rig(Orb::makePtr<Orb::SimulatedClock>());
            for (std::size_t n = 0; n < count; ++n) {
                rig.addIpv4(n * Rig::vrfs);
            }
            rig.settle();
            Result teardown;
            teardown.routes = table(rig, Family::ipv4).size();
            const double start = cpuSeconds();
            rig.inputs().vrfs().nameToIdMapWrapper()->nameToIdMap()->vrfIdDel(rig.vrfName(0));
            teardown.cpu = cpuSeconds() - start;
            return teardown;
        });
        state.SetIterationTime(result.cpu);
        state.counters["routes"] = static_cast<double>(result.routes);
        state.counters["us_per_route"] = result.cpu * 1e6 / static_cast<double>(result.routes);
    }
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(16384)->Arg(65536)->Arg(262144)->Iterations(1)->UseManualTime()->Unit(
        benchmark::kMillisecond);
}

BENCHMARK(Burst)->Apply(sizes);
BENCHMARK(Withdraw)->Apply(sizes);
BENCHMARK(Flap)->Arg(16384)->Arg(65536)->Arg(262144)->Unit(benchmark::kMicrosecond);
BENCHMARK(BurstIPv6)->Apply(sizes);
BENCHMARK(VirtualIp)->Arg(16384)->Arg(65536)->Iterations(1)->UseManualTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(Leak)->Arg(4096)->Arg(16384)->Arg(65536)->Iterations(1)->UseManualTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(Teardown)->Arg(16384)->Arg(65536)->Iterations(1)->UseManualTime()->Unit(
    benchmark::kMillisecond);

} // namespace

} // namespace Bench
