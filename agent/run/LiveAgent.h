#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "agent/device/AgentRoot.h"
#include "agent/device/DeviceInputs.h"
#include "agent/device/DrainMeter.h"
#include "agent/device/RoomReport.h"
#include "agent/install/Installer.h"
#include "agent/output/OutputQueue.h"
#include "agent/run/Heartbeat.h"
#include "agent/run/LiveConfig.h"
#include "agent/run/LiveDevice.h"
#include "agent/run/LiveMessages.h"
#include "agent/run/ReadyVrfs.h"
#include "agent/run/RouteFeed.h"
#include "agent/run/ServiceReport.h"
#include "agent/run/Signals.h"
#include "agent/server/SocketServer.h"
#include "agent/topics/AgentControl.h"
#include "agent/topics/RouteLookup.h"
#include "agent/topics/StatePrinter.h"
#include "agent/viplog/VipLogWriter.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/RealClock.h"

namespace Agent {

/// The agent, live on this machine: the library's root, fed by the kernel and the configuration
/// file, in an event loop of its own. SIGINT and SIGTERM stop it, as does SIGHUP unless there is a
/// configuration file, which is then read again.
///
/// One agent thread, no locks.
class LiveAgent final : private AgentControl {
  public:
    /// Where other processes can read the tables: in the folder `path`, or where they are by
    /// default. Where the default folder cannot be had the agent keeps its tables to itself, and
    /// says so.
    struct TablesPlace {
        std::string path;
        bool isDefault = false;
        std::optional<gid_t> group; // who may read
    };

    struct Options {
        LiveDevice::Options device;
        std::string configFile;                    // empty for none
        std::optional<TablesPlace> tables;         // none for private tables
        bool externalLeaks = false;                // the tables of leaks are somebody else's
        std::optional<Installer::Options> install; // none to change nothing in the kernel
        bool timestamps = false;                   // before lines of output, messages and traces
        std::vector<L3::VrfName> readyVrfs;        // that its own readiness takes; see ReadyVrfs
    };

    /// Where the agent can be asked: at `place`, or where it is by default. At the default place it
    /// does without, and says so, if it cannot listen there.
    struct Listening {
        SocketPlace place;
        bool isDefault = false;
    };

    /// How changes are printed: not at all, as JSON, or as lines for people.
    struct ChangeForm {
        bool isQuiet = false;
        bool json = false;
        Colour colour;
    };

    /// Throws BadInputError for a bad configuration file, FailureError and Orb::Error when the
    /// device cannot be followed or the tables cannot be where they must be.
    explicit LiveAgent(const Options& options);
    LiveAgent(const LiveAgent&) = delete;
    LiveAgent& operator=(const LiveAgent&) = delete;
    ~LiveAgent() override;

    /// Lets clients ask the agent, from now on. Throws FailureError.
    void listen(const Listening& where);

    /// Streams the tables of virtual addresses to `file`, from now on. A reader that falls behind
    /// or goes is done without. Throws FailureError when the file cannot be opened.
    void logVirtualIps(const std::string& file);

    /// Runs until all that is there has been learned and turned into routes, then prints the state.
    /// Prints nothing when it is stopped before. Throws FailureError, after it has printed the
    /// rest, when VRFs that are there cannot be followed or not all of a log was written.
    void runOnce(StatePrinter& printer);

    /// Prints each route that comes, changes or goes on standard output, as it happens, until the
    /// agent is stopped, and tells the service manager, if there is one, how it is. The stop itself
    /// prints nothing. Never waits for a reader: what one has not taken is kept within a bound,
    /// then dropped. Throws FailureError when writing fails and, after the end, when not all of a
    /// log was written; ReaderGoneError when the reader has gone.
    void follow(const ChangeForm& form);

  private:
    void start(const Options& options, bool gracefulRestart);
    void startWith(const DeviceInputs::Tables& tables, bool gracefulRestart);
    Orb::Ptr<Vaultdb::Folder> openFolder(const TablesPlace& place) const;
    void onSignal(int signal);
    AgentStatusRow status() const override;
    std::vector<ConfigChangeRow> reload() override;
    bool isQuiet() const override;
    std::vector<L3::VrfName> notReady(const std::vector<L3::VrfName>& vrfs) const override;
    AgentView view() {
        return {**root_,
                *inputs_,
                *clock_,
                device_ ? &*device_ : nullptr,
                installer_ ? &*installer_ : nullptr,
                this};
    }
    std::string missingVrfs() const;
    void followTo(OutputQueue* output);
    void onChange(const RouteFeed::Event& event);
    void turn();
    bool isComplete() const;
    void failIfIncomplete() const;
    void checkVipLog();
    void finishVipLog();

    Orb::Ptr<Orb::Clock> clock_ = Orb::makePtr<Orb::RealClock>();
    Orb::ActivityManager activityManager_{clock_};
    LiveMessages messages_;
    LiveDevice::Report report_ = [this](const std::string& message) { messages_.report(message); };
    bool externalLeaks_;
    LiveConfig config_; // read before signals are taken: standard input may keep it waiting
    bool stopped_ = false;
    ChangeForm form_;
    bool verifying_ = false;
    std::optional<Signals> signals_;
    std::optional<DeviceInputs> inputs_;
    std::optional<AgentRoot> root_;
    std::optional<Heartbeat> heartbeat_; // while the tables are shared
    std::optional<RouteLookup> lookup_;
    std::optional<RouteFeed> feed_;
    std::optional<LiveDevice> device_;
    std::optional<Installer> installer_;
    std::optional<ReadyVrfs> ready_;
    std::optional<ServiceReport> service_; // while it runs on
    std::optional<SocketServer> server_;
    std::optional<DrainMeter> drains_;
    RoomReport room_;
    std::optional<VipLogWriter> vipLog_;
    bool vipLogFailed_ = false;
    OutputQueue* output_ = nullptr; // while changes are printed
    double started_ = clock_->now();
    std::string line_;
};

} // namespace Agent
