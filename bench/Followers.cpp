#include "bench/Followers.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <new>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <directnet/tables.hpp>

namespace Bench {

TablesFolder::TablesFolder() {
    char name[] = "/dev/shm/directnet-bench-XXXXXX";
    if (::mkdtemp(name) == nullptr) {
        std::perror(name);
        std::exit(1);
    }
    path_ = name;
}

TablesFolder::~TablesFolder() { std::filesystem::remove_all(path_); }

Orb::Ptr<Vaultdb::Folder> TablesFolder::open() const {
    return Orb::makePtr<Vaultdb::Folder>(Vaultdb::Folder::Options{path_, {}, {}});
}

std::uint64_t nanosecondsNow() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000
           + static_cast<std::uint64_t>(now.tv_nsec);
}

Followers::Followers(const std::string& folder, unsigned count)
    : reports_(*new(::mmap(nullptr, sizeof(Reports), PROT_READ | PROT_WRITE,
                           MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Reports{}) {
    for (unsigned n = 0; n < count; ++n) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            follow(folder, reports_[n]);
        }
        pids_.push_back(pid);
    }
    await([](const Report& report) { return report.updates > 0; });
}

Followers::~Followers() {
    for (const pid_t pid : pids_) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
    ::munmap(&reports_, sizeof reports_);
}

void Followers::follow(const std::string& folder, Report& report) {
    directnet::Tables tables(folder);
    const auto note = [&report](const directnet_change& change) {
        if (change.kind == DIRECTNET_ROUTE && change.after != nullptr) {
            report.metric = change.after->route.metric;
        }
    };
    for (;;) {
        tables.update(note);
        report.at = nanosecondsNow();
        report.routes = tables.sizes().ipv4_routes;
        ++report.updates;
        tables.wait();
    }
}

template <typename Condition>
void Followers::await(Condition condition) const {
    const auto end = reports_.begin() + static_cast<std::ptrdiff_t>(pids_.size());
    while (!std::all_of(reports_.begin(), end, condition)) {
        ::usleep(100);
    }
}

std::uint64_t Followers::awaitMetric(std::uint32_t metric) const {
    await([metric](const Report& report) { return report.metric == metric; });
    ::usleep(1000);
    return reports_[0].at;
}

void Followers::awaitRoutes(std::uint64_t routes) const {
    await([routes](const Report& report) { return report.routes == routes; });
}

} // namespace Bench
