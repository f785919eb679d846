#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/vaultdb/EntityManager.h"
#include "tables/layout/TablePaths.h"
#include "tables/reader/Mirror.h"

namespace Routing::DirectNet {

/// A folder for shared tables, in memory, that goes with its owner.
class SharedFolder {
  public:
    SharedFolder() {
        char name[] = "/dev/shm/directnet-test-XXXXXX";
        path_ = ::mkdtemp(name);
    }
    SharedFolder(const SharedFolder&) = delete;
    SharedFolder& operator=(const SharedFolder&) = delete;
    ~SharedFolder() { std::filesystem::remove_all(path_); }

    const std::string& path() const { return path_; }
    /// A store on it; whatever it has to report is a failure.
    Orb::Ptr<Vaultdb::EntityManager> store() const {
        return Orb::makePtr<Vaultdb::EntityManager>(
            Orb::makePtr<Vaultdb::Folder>(Vaultdb::Folder::Options{
                path_, {}, [](const std::string& message) { ADD_FAILURE() << message; }}));
    }

  private:
    std::string path_;
};

/// What a reader sees of all tables.
class Reader {
  public:
    explicit Reader(const SharedFolder& folder) {
        Tables::ErrorText error;
        folder_.pathIs(folder.path().c_str(), error);
    }

    /// Takes in what has changed.
    void update() {
        Tables::ErrorText error;
        ASSERT_EQ(folder_.look(error), Tables::Found::here) << error.text();
        forEach([&](auto& mirror) {
            const auto ignore = [](const auto*, const auto*) {};
            EXPECT_NE(mirror.update(folder_, error, ignore), Tables::Found::refused)
                << error.text();
        });
    }

    std::size_t routes() const { return routes4_.count() + routes6_.count(); }
    std::size_t leaks() const { return leaks4_.count() + leaks6_.count(); }

    /// How many records are not the same in the other.
    std::size_t differencesTo(Reader& other) {
        std::size_t differences = 0;
        const auto compare = [&](auto& mine, auto& others) {
            differences += mine.count() == others.count() ? 0 : 1;
            mine.each([&](const auto& record) {
                const auto* same = others.find(keyOf(record));
                differences += same != nullptr && Tables::sameContent(*same, record) ? 0 : 1;
                return 0;
            });
        };
        compare(routes4_, other.routes4_);
        compare(routes6_, other.routes6_);
        compare(vias4_, other.vias4_);
        compare(vias6_, other.vias6_);
        compare(viaSets_, other.viaSets_);
        compare(vrfs_, other.vrfs_);
        compare(leaks4_, other.leaks4_);
        compare(leaks6_, other.leaks6_);
        return differences;
    }

    const Tables::Mirror<Tables::RouteRecord>& ipv4Routes() const { return routes4_; }

  private:
    template <typename F>
    void forEach(F function) {
        function(routes4_);
        function(routes6_);
        function(vias4_);
        function(vias6_);
        function(viaSets_);
        function(vrfs_);
        function(leaks4_);
        function(leaks6_);
    }

    Tables::Folder folder_;
    Tables::Mirror<Tables::RouteRecord> routes4_{Tables::Paths::ipv4Routes, Tables::ipv4};
    Tables::Mirror<Tables::RouteRecord> routes6_{Tables::Paths::ipv6Routes, Tables::ipv6};
    Tables::Mirror<Tables::ViaRecord> vias4_{Tables::Paths::ipv4Vias};
    Tables::Mirror<Tables::ViaRecord> vias6_{Tables::Paths::ipv6Vias};
    Tables::Mirror<Tables::ViaSetRecord> viaSets_{Tables::Paths::viaSets};
    Tables::Mirror<Tables::VrfRecord> vrfs_{Tables::Paths::vrfs};
    Tables::Mirror<Tables::LeakRecord> leaks4_{Tables::Paths::ipv4Leaks, Tables::ipv4};
    Tables::Mirror<Tables::LeakRecord> leaks6_{Tables::Paths::ipv6Leaks, Tables::ipv6};
};

/// Another process that does something and ends with status 0 if no expectation failed in it.
class Child {
  public:
    explicit Child(const std::function<void()>& work) {
        std::fflush(nullptr);
        pid_ = ::fork();
        if (pid_ == 0) {
            work();
            std::fflush(nullptr);
            ::_exit(testing::Test::HasFailure() ? 1 : 0);
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        if (pid_ > 0) {
            kill();
        }
    }

    pid_t pid() const { return pid_; }
    int wait(int options = 0) const {
        int status = 0;
        ::waitpid(pid_, &status, options);
        return status;
    }
    void kill() {
        ::kill(pid_, SIGKILL);
        wait(__WALL);
        pid_ = 0;
    }
    /// Waits for its end.
    int result() {
        const int status = wait();
        pid_ = 0;
        return status;
    }
    bool succeeds() { return result() == 0; }

  private:
    pid_t pid_ = 0;
};

} // namespace Routing::DirectNet
