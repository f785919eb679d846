#include <charconv>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <vector>

#include "agent/base/Errors.h"
#include "agent/base/SocketAddress.h"
#include "agent/base/TablesPath.h"
#include "agent/cli/Commands.h"
#include "agent/output/Output.h"
#include "agent/ring/RingPlace.h"
#include "agent/run/ConfigCheck.h"
#include "agent/run/LiveAgent.h"
#include "agent/topics/StatePrinter.h"
#include "platform/ringlog/TraceHandle.h"

namespace Agent {

namespace {

struct RunOptions {
    bool once = false;
    bool json = false;
    int traceLevel = Ringlog::TraceHandle::off;
    std::vector<std::string> vrfs;
    bool noVrfDevices = false;
    std::string configFile;
    std::string socket;
    bool noSocket = false;
    std::string ring;
    std::string vipLog;
    std::string tables;
    bool noTables = false;
    std::string tablesGroup;
    std::string leaks = "config";
    bool install = false;
    int installProtocol = 77;
    bool keepInstalled = false;
    std::string readyVrfs;
    bool quiet = false;
    bool timestamps = false;
    bool check = false;
    std::string socketGroup;
    std::string socketMode;
};

/// Namespaces and clients take descriptors, and the usual soft limit is for programs that select().
void raiseFileLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

/// The permissions that octal digits say. Throws BadInputError.
mode_t readMode(const std::string& text) {
    constexpr int octal = 8;
    constexpr unsigned highest = 0777;
    unsigned mode = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, mode, octal);
    if (result.ec != std::errc() || result.ptr != end || mode > highest) {
        throw BadInputError("directnet: --socket-mode " + text
                            + ": must be an octal number like 660");
    }
    return mode;
}

/// None where nobody is to ask. Throws BadInputError.
std::optional<LiveAgent::Listening> listening(const RunOptions& options) {
    SocketPlace place{options.socket};
    if (!options.socketGroup.empty()) {
        place.group = readGroup(options.socketGroup);
    }
    if (!options.socketMode.empty()) {
        place.mode = readMode(options.socketMode);
    }
    const bool isDefault = options.socket.empty();
    if (isDefault) {
        place.path = defaultSocketPath();
    }
    if (isDefault && (options.once || options.noSocket)) {
        return std::nullopt;
    }
    return LiveAgent::Listening{place, isDefault};
}

void check(const LiveAgent::Options& options) {
    checkConfig(options.device, options.configFile, report);
    std::cout << (options.configFile.empty() ? "the options" : options.configFile)
              << ": would do\n";
}

/// None for private tables.
std::optional<LiveAgent::TablesPlace> tablesPlace(const RunOptions& options) {
    const auto group =
        options.tablesGroup.empty() ? std::nullopt : std::optional(readGroup(options.tablesGroup));
    if (!options.tables.empty()) {
        return LiveAgent::TablesPlace{options.tables, false, group};
    }
    if (options.once || options.noTables) {
        return std::nullopt;
    }
    return LiveAgent::TablesPlace{defaultTablesPath(), true, group};
}

/// None where nothing is installed. Throws BadInputError for options that ask for nothing.
std::optional<Installer::Options> installOptions(const RunOptions& options) {
    if (options.install) {
        return Installer::Options{static_cast<std::uint8_t>(options.installProtocol),
                                  options.keepInstalled};
    }
    if (options.keepInstalled || options.installProtocol != RunOptions().installProtocol) {
        throw BadInputError("--keep-installed and --install-protocol need --install");
    }
    return std::nullopt;
}

/// The names between commas. Throws BadInputError.
std::vector<L3::VrfName> readReadyVrfs(const std::string& text) {
    std::vector<L3::VrfName> names;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');) {
        if (const std::string complaint = complaintAboutVrf(part); !complaint.empty()) {
            throw BadInputError(
                std::string("directnet: --ready-vrfs: \"").append(part).append("\": ") + complaint);
        }
        names.emplace_back(part);
    }
    return names;
}

void run(const RunOptions& options) {
    const auto where = listening(options);
    const LiveAgent::Options agentOptions{{readVrfOptions(options.vrfs), !options.noVrfDevices},
                                          options.configFile,
                                          tablesPlace(options),
                                          options.leaks == "external",
                                          installOptions(options),
                                          options.timestamps,
                                          readReadyVrfs(options.readyVrfs)};
    if (options.check) {
        check(agentOptions);
        return;
    }
    Ringlog::TraceHandle::levelOfAllIs(options.traceLevel);
    raiseFileLimit();
    placeRing(options.ring, options.once ? RingDefault::nowhere : RingDefault::stateFolder, report);
    LiveAgent agent(agentOptions);
    if (where) {
        agent.listen(*where);
    }
    if (!options.vipLog.empty()) {
        agent.logVirtualIps(options.vipLog);
    }
    const Colour colour(useColour());
    if (!options.once) {
        agent.follow({options.quiet, options.json, colour});
    } else if (options.json) {
        agent.runOnce(*makeStateDocuments(std::cout));
    } else {
        agent.runOnce(*makeStateTables(std::cout, colour));
    }
}

} // namespace

Command runCommand() {
    const auto options = std::make_shared<RunOptions>();
    return {
        .name = "run",
        .description =
            "Run live on this machine: the network namespace it is started in is the VRF "
            "\"default\", and each VRF device is the VRF of its name. Prints each route that comes "
            "(+), changes (~) or goes (-), as it happens, until SIGINT or SIGTERM; the stop prints "
            "nothing.",
        .arguments =
            {{.name = "--once",
              .help = "Print the state once everything there is has been learned, and end",
              .value = &options->once},
             {.name = "--json", .help = "Print JSON: one object a line", .value = &options->json},
             {.name = "--quiet",
              .help = "Print no changes",
              .value = &options->quiet,
              .excludes = "--once"},
             timestampsOption(options->timestamps),
             traceOption(options->traceLevel),
             {.name = "--check",
              .help = "Only say whether the configuration would do, and which of its VRFs are not "
                      "there",
              .value = &options->check,
              .excludes = "--once"},
             {.name = "--ready-vrfs",
              .help = "The VRFs, with commas in between, that must be ready before the agent says "
                      "that it is; by default those that are there when it starts",
              .value = &options->readyVrfs,
              .placeholder = "NAMES",
              .complaint = complaintIfEmpty,
              .excludes = "--once"},
             {.name = "--vrf",
              .help = "Follow the named network namespace NETNS as the VRF NAME, while there is "
                      "one; any number",
              .value = &options->vrfs,
              .placeholder = "NAME=NETNS"},
             {.name = "--no-vrf-devices",
              .help = "Do not follow VRF devices as VRFs: all addresses of a namespace are in one",
              .value = &options->noVrfDevices},
             {.name = "--config",
              .help = "A device document with virtualIps, leaks, ribWaits, vrfs.NAME.id and "
                      "gracefulRestart; SIGHUP or the command reload reads it again",
              .value = &options->configFile,
              .placeholder = "FILE",
              .complaint = complaintIfEmpty},
             {.name = "--socket",
              .help = "Where clients can ask the agent; by default /run/directnet.sock for root, "
                      "else directnet.sock in the user's runtime folder, with the number of the "
                      "network namespace in the name where that is not the system's, and nowhere "
                      "with --once",
              .value = &options->socket,
              .placeholder = "PATH",
              .complaint = complaintIfEmpty},
             {.name = "--no-socket",
              .help = "Let no clients ask",
              .value = &options->noSocket,
              .excludes = "--socket"},
             {.name = "--socket-group",
              .help = "The group of the socket's file, by name or number",
              .value = &options->socketGroup,
              .placeholder = "GROUP",
              .complaint = complaintIfEmpty},
             {.name = "--socket-mode",
              .help = "The permissions of the socket's file, in octal; 660 by default",
              .value = &options->socketMode,
              .placeholder = "MODE",
              .complaint = complaintIfEmpty},
             {.name = "--tables",
              .help = "The folder of the tables, which other processes read; by default "
                      "/dev/shm/directnet for root, else directnet in the user's runtime folder, "
                      "and nowhere with --once",
              .value = &options->tables,
              .placeholder = "DIR",
              .complaint = complaintIfEmpty},
             {.name = "--no-tables",
              .help = "Let no other process read the tables",
              .value = &options->noTables,
              .excludes = "--tables"},
             {.name = "--tables-group",
              .help = "The group that may read the tables, by name or number",
              .value = &options->tablesGroup,
              .placeholder = "GROUP",
              .complaint = complaintIfEmpty},
             {.name = "--leaks",
              .help =
                  "Whose leaks there are: those of the configuration, as by default, or external "
                  "ones in the tables, see the command leaks",
              .value = &options->leaks,
              .choices = {"config", "external"}},
             {.name = "--install",
              .help = "Install in the kernel the routes that it does not make by itself: those of "
                      "virtual addresses, and leaked ones",
              .value = &options->install,
              .excludes = "--once"},
             {.name = "--install-protocol",
              .help =
                  "The protocol number of what is installed, 5 to 255, 77 by default; nothing of "
                  "another one is touched",
              .value = &options->installProtocol,
              .placeholder = "N",
              .range = {{5, 255}}},
             {.name = "--keep-installed",
              .help = "Leave what is installed in the kernel at the end",
              .value = &options->keepInstalled},
             ringOption(options->ring),
             vipLogOption(options->vipLog)},
        .run = [options] { run(*options); }};
}

} // namespace Agent
