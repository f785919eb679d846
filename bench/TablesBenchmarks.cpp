// Tables in shared memory, and those who read them.
//
//   SharedWrite/N       N routes are written into a shared table
//   SharedDelete/N      the same routes are deleted there
//   Snapshot/N          a reader takes the state of a table with N routes
//   Follow              a writer changes 64 routes and comes to the end of its drain; another
//                       process that waits has the changes
//   Bell/K              the bell is rung while K readers wait
//   BurstFollowed/N/K   Burst/N into shared tables, with K readers that keep up
//
// Counters:
//   us_per_route     CPU time of the writer per route
//   x_private        CPU time over that of the same in private memory, in the same process
//   bytes_per_route  slots, index and ring over routes
//   routes_per_s     of CPU time; so an idle machine copies as many in a second
//   x_memcpy         CPU time over that of copying the bytes of N records into fresh memory
//   median_us, p99_us
//                    Follow: from the end of the drain to the reader's having the changes.
//                    Bell: CPU time of the writer's thread for one ring
//   cpu_ms           BurstFollowed: CPU time of the writer; the median of runs that take turns
//                    with those without readers
//   x_alone          cpu_ms over that without readers

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cstring>
#include <ctime>
#include <memory>
#include <optional>
#include <unistd.h>
#include <vector>

#include <directnet/tables.hpp>

#include "bench/Followers.h"
#include "bench/Measure.h"
#include "bench/Rig.h"
#include "platform/orb/loop/RealClock.h"
#include "platform/routing/RouteConfig.h"
#include "tables/layout/TablePaths.h"

namespace Bench {

namespace {

using Routing::Rib::Route;
using Routing::Rib::RouteConfig;
using Routing::Rib::RouteKey;

std::size_t countOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

Route routeOf(std::size_t n, std::uint32_t metric = 0) {
    return {RouteKey(Rig::vrfId(n % Rig::vrfs), Rig::ipv4(n).subnet()),
            Routing::Rib::ViaSetKey(n % 4096 + 1), Routing::Fib::RouteType::connected,
            Routing::MetricPref(metric, 1)};
}

std::vector<Route> routesOf(std::size_t count) {
    std::vector<Route> routes;
    for (std::size_t n = 0; n < count; ++n) {
        routes.push_back(routeOf(n));
    }
    return routes;
}

/// A table of a folder.
struct SharedRoutes {
    explicit SharedRoutes(const TablesFolder& in) : folder(in.open()) {
        config->share(folder, Tables::Paths::ipv4Routes);
    }
    Orb::ActivityManager activityManager{Orb::makePtr<Orb::RealClock>()};
    Orb::Ptr<Vaultdb::Folder> folder;
    Orb::Ptr<RouteConfig> config = Orb::makePtr<RouteConfig>();
};

double add(RouteConfig& config, const std::vector<Route>& routes) {
    const double start = cpuSeconds();
    for (const Route& route : routes) {
        config.routeAdd(route);
    }
    return cpuSeconds() - start;
}

double del(RouteConfig& config, const std::vector<Route>& routes) {
    const double start = cpuSeconds();
    for (const Route& route : routes) {
        config.routeDel(route.key());
    }
    return cpuSeconds() - start;
}

double bytesOf(const RouteConfig& config) {
    std::size_t bytes = config.recordBytes();
    for (const auto vrfId : config.vrfIds()) {
        bytes += config.routes(vrfId)->allocatedBytes();
    }
    return static_cast<double>(bytes);
}

void measureWriting(benchmark::State& state, bool deletion) {
    const std::size_t count = countOf(state);
    for (auto iteration : state) {
        const Result result = medianOf(9, [&] {
            const TablesFolder folder;
            const SharedRoutes shared(folder);
            const std::vector<Route> routes = routesOf(count);
            Result run;
            run.routes = count;
            const auto config = Orb::makePtr<RouteConfig>();
            run.bareCpu = add(*config, routes);
            run.cpu = add(*shared.config, routes);
            run.bytes = bytesOf(*shared.config);
            if (deletion) {
                run.bareCpu = del(*config, routes);
                run.cpu = del(*shared.config, routes);
            }
            return run;
        });
        state.SetIterationTime(result.cpu);
        const auto routes = static_cast<double>(count);
        state.counters["us_per_route"] = result.cpu * 1e6 / routes;
        state.counters["x_private"] = result.cpu / result.bareCpu;
        if (!deletion) {
            state.counters["bytes_per_route"] = result.bytes / routes;
        }
    }
}

void SharedWrite(benchmark::State& state) { measureWriting(state, false); }
void SharedDelete(benchmark::State& state) { measureWriting(state, true); }

double copyBytes(std::size_t bytes) {
    const std::vector<char> from(bytes, 'x');
    const double start = cpuSeconds();
    const std::unique_ptr<char[]> to(new char[bytes]);
    std::memcpy(to.get(), from.data(), bytes);
    benchmark::DoNotOptimize(to.get());
    benchmark::ClobberMemory();
    return cpuSeconds() - start;
}

void Snapshot(benchmark::State& state) {
    const std::size_t count = countOf(state);
    for (auto iteration : state) {
        const Result result = medianOf(9, [&] {
            const TablesFolder folder;
            const SharedRoutes shared(folder);
            add(*shared.config, routesOf(count));
            Result run;
            run.bareCpu = copyBytes(count * sizeof(Tables::RouteRecord));
            directnet::Tables tables(folder.path());
            const double start = cpuSeconds();
            run.routes = static_cast<std::size_t>(tables.update());
            run.cpu = cpuSeconds() - start;
            return run;
        });
        state.SetIterationTime(result.cpu);
        state.counters["routes"] = static_cast<double>(result.routes);
        state.counters["routes_per_s"] = static_cast<double>(result.routes) / result.cpu;
        state.counters["x_memcpy"] = result.cpu / result.bareCpu;
    }
}

void reportTimes(benchmark::State& state, std::vector<double> microseconds) {
    std::sort(microseconds.begin(), microseconds.end());
    state.counters["median_us"] = microseconds[microseconds.size() / 2];
    state.counters["p99_us"] = microseconds[microseconds.size() * 99 / 100];
}

void Follow(benchmark::State& state) {
    const TablesFolder folder;
    const SharedRoutes shared(folder);
    const Followers follower(folder.path(), 1);
    std::vector<double> microseconds;
    for (auto iteration : state) {
        const auto metric = static_cast<std::uint32_t>(microseconds.size() + 1);
        for (std::size_t n = 0; n < 64; ++n) {
            shared.config->routeAdd(routeOf(n, metric));
        }
        const std::uint64_t end = nanosecondsNow();
        shared.folder->ring();
        const double time = static_cast<double>(follower.awaitMetric(metric) - end) / 1e3;
        state.SetIterationTime(time / 1e6);
        microseconds.push_back(time);
    }
    reportTimes(state, std::move(microseconds));
}

void Bell(benchmark::State& state) {
    const TablesFolder folder;
    const SharedRoutes shared(folder);
    const Followers followers(folder.path(), static_cast<unsigned>(state.range(0)));
    std::vector<double> microseconds;
    for (auto iteration : state) {
        const auto metric = static_cast<std::uint32_t>(microseconds.size() + 1);
        shared.config->routeAdd(routeOf(0, metric));
        const double start = threadCpuSeconds();
        shared.folder->ring();
        const double time = threadCpuSeconds() - start;
        followers.awaitMetric(metric);
        state.SetIterationTime(time);
        microseconds.push_back(time * 1e6);
    }
    reportTimes(state, std::move(microseconds));
}

/// Seconds of the writer's CPU.
Result burst(std::size_t count, unsigned readers) {
    const TablesFolder folder;
    Rig rig(Orb::makePtr<Orb::RealClock>(), folder.open());
    const Followers followers(folder.path(), readers);
    Result result;
    const double start = cpuSeconds();
    for (std::size_t n = 0; n < count; ++n) {
        rig.addIpv4(n);
    }
    result.longestCall = rig.settle();
    result.cpu = cpuSeconds() - start;
    result.routes = rig.root()->ipv4AllVrfRouteConfig()->size();
    followers.awaitRoutes(result.routes);
    return result;
}

void BurstFollowed(benchmark::State& state) {
    const std::size_t count = countOf(state);
    const auto readers = static_cast<unsigned>(state.range(1));
    for (auto iteration : state) {
        std::array<std::vector<double>, 2> seconds;
        for (int run = 0; run < 5; ++run) {
            for (const std::size_t followed : {0U, 1U}) {
                const unsigned present = followed == 0 ? 0 : readers;
                seconds[followed].push_back(inChild([&] { return burst(count, present); }).cpu);
            }
        }
        for (auto& each : seconds) {
            std::sort(each.begin(), each.end());
        }
        const double alone = seconds[0][seconds[0].size() / 2];
        const double cpu = seconds[1][seconds[1].size() / 2];
        state.SetIterationTime(cpu);
        state.counters["cpu_ms"] = cpu * 1e3;
        state.counters["x_alone"] = cpu / alone;
    }
}

void once(benchmark::internal::Benchmark* benchmark) {
    benchmark->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(65536)->Arg(262144)->Arg(1048576)->Apply(once);
}

BENCHMARK(SharedWrite)->Apply(sizes);
BENCHMARK(SharedDelete)->Apply(sizes);
BENCHMARK(Snapshot)->Apply(sizes);
BENCHMARK(Follow)->Iterations(2000)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(Bell)->Arg(0)->Arg(1)->Arg(8)->Arg(100)->Iterations(300)->UseManualTime()->Unit(
    benchmark::kMicrosecond);
BENCHMARK(BurstFollowed)->Args({262144, 0})->Args({262144, 1})->Args({262144, 8})->Apply(once);

} // namespace

} // namespace Bench
