#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

#include "platform/vaultdb/Folder.h"

namespace Bench {

/// A folder for tables, in shared memory, that goes with its owner.
class TablesFolder {
  public:
    TablesFolder();
    TablesFolder(const TablesFolder&) = delete;
    TablesFolder& operator=(const TablesFolder&) = delete;
    ~TablesFolder();

    const std::string& path() const { return path_; }
    Orb::Ptr<Vaultdb::Folder> open() const;

  private:
    std::string path_;
};

/// Nanoseconds of the steady clock, the same in every process.
std::uint64_t nanosecondsNow();

/// Processes that follow the tables of a folder as any program would: each waits on the library's
/// descriptor and brings its view to the present. They end with their owner.
class Followers {
  public:
    static constexpr unsigned maxCount = 100;

    /// Returns when each waits for changes.
    Followers(const std::string& folder, unsigned count);
    Followers(const Followers&) = delete;
    Followers& operator=(const Followers&) = delete;
    ~Followers();

    /// Waits until each has been told of a route with that metric, and waits again. Returns when,
    /// in nanosecondsNow(), the first one had it.
    std::uint64_t awaitMetric(std::uint32_t metric) const;
    /// Waits until each has that many IPv4 routes.
    void awaitRoutes(std::uint64_t routes) const;

  private:
    /// What a follower tells of itself after each update.
    struct Report {
        std::atomic<std::uint64_t> updates;
        std::atomic<std::uint64_t> at;
        std::atomic<std::uint64_t> routes;
        std::atomic<std::uint32_t> metric; ///< of the last route told
    };
    using Reports = std::array<Report, maxCount>;

    [[noreturn]] static void follow(const std::string& folder, Report& report);
    template <typename Condition>
    void await(Condition condition) const;

    Reports& reports_;
    std::vector<pid_t> pids_;
};

} // namespace Bench
