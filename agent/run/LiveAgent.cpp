#include "agent/run/LiveAgent.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <unistd.h>

#include "agent/base/Errors.h"
#include "agent/base/WallTime.h"
#include "agent/output/OutputFile.h"
#include "agent/patch/Merge.h"
#include "agent/ring/RingPlace.h"
#include "agent/run/ConfigText.h"
#include "agent/topics/ChangeRow.h"
#include "agent/topics/StateWalk.h"
#include "directnet/version.h"

namespace Agent {

namespace {

/// Seconds for which the event loop sleeps at most.
constexpr double longestSleep = 3600;
/// Bytes of changes that may wait for whoever reads them on standard output.
constexpr std::size_t outputCapacity = std::size_t{64} << 20U;

} // namespace

LiveAgent::LiveAgent(const Options& options)
    : externalLeaks_(options.externalLeaks), config_(options.configFile, externalLeaks_, report_),
      signals_(std::in_place, clock_, [this](int signal) { onSignal(signal); }) {
    messages_.timestampsIs(options.timestamps);
    const std::optional<ConfigFile> config = config_.take();
    const DevicePatch document = config ? config->document() : DevicePatch();
    start(options, after<&DevicePatch::gracefulRestart>(document, std::nullopt));
    reportRing(report_);
    drains_.emplace(**root_, *clock_);
    lookup_.emplace(view());
    feed_.emplace(**root_, *inputs_, [this](const RouteFeed::Event& event) { onChange(event); });
    try {
        device_.emplace(*inputs_, clock_, options.device, document, report_);
    } catch (const DocumentError& error) {
        throw BadInputError(config ? config->message(error) : error.what());
    }
    if (options.install) {
        installer_.emplace(view(), *device_, clock_, *options.install, report_);
        device_->observerIs(&*installer_);
    }
    ready_.emplace(**root_, *device_, options.readyVrfs);
}

LiveAgent::~LiveAgent() {
    feed_.reset(); // before the root takes all routes back
    if (installer_) {
        installer_->finish();
    }
}

void LiveAgent::start(const Options& options, bool gracefulRestart) {
    if (!options.tables) {
        if (externalLeaks_) {
            throw FailureError("--leaks external needs tables that others can write, see --tables");
        }
        startWith({}, gracefulRestart);
        return;
    }
    try {
        startWith({openFolder(*options.tables), externalLeaks_}, gracefulRestart);
    } catch (const Vaultdb::FolderError& error) {
        root_.reset();
        inputs_.reset();
        if (!options.tables->isDefault || externalLeaks_) {
            throw;
        }
        report_(std::string(error.what()) + "; nobody can read the tables of this agent");
        startWith({}, gracefulRestart);
    }
}

Orb::Ptr<Vaultdb::Folder> LiveAgent::openFolder(const TablesPlace& place) const {
    if (place.path.empty()) {
        throw Vaultdb::FolderError("no runtime folder to keep the tables in");
    }
    return Orb::makePtr<Vaultdb::Folder>(
        Vaultdb::Folder::Options{.path = place.path, .group = place.group, .report = report_});
}

void LiveAgent::startWith(const DeviceInputs::Tables& tables, bool gracefulRestart) {
    inputs_.emplace(Orb::makePtr<Kiln::TaskScheduler>(clock_), gracefulRestart, tables);
    root_.emplace(*inputs_);
    if (tables.folder != nullptr) {
        heartbeat_.emplace(tables.folder, clock_);
    }
}

void LiveAgent::runOnce(StatePrinter& printer) {
    while (!stopped_ && !isComplete()) {
        turn();
    }
    if (!stopped_) {
        // Whoever reads this is waited for, and can be given up by a signal.
        signals_.reset();
        printState(printer, view());
    }
    finishVipLog();
    if (!stopped_) {
        failIfIncomplete();
    }
}

void LiveAgent::logVirtualIps(const std::string& file) {
    vipLog_.emplace(file);
    vipLog_->attach((*root_)->allVrfVirtualIpStatus(), (*root_)->allVrfVirtualIp6Status());
}

/// Says it when the log has lost its reader.
void LiveAgent::checkVipLog() {
    if (vipLog_ && !vipLogFailed_ && !vipLog_->failure().empty()) {
        report_(vipLog_->failure() + "; this log ends here");
        vipLogFailed_ = true;
    }
}

void LiveAgent::finishVipLog() {
    if (vipLog_) {
        vipLog_->finish();
    }
}

void LiveAgent::failIfIncomplete() const {
    std::string failures;
    for (const std::string& failure : device_->failures()) {
        failures += (failures.empty() ? "" : "; ") + failure;
    }
    if (!failures.empty()) {
        throw FailureError("the state is incomplete: " + failures);
    }
}

void LiveAgent::follow(const ChangeForm& form) {
    form_ = form;
    if (form.isQuiet) {
        followTo(nullptr);
    } else {
        const OutputFile file(STDOUT_FILENO);
        OutputQueue output(file, outputCapacity, [this](std::size_t lines) {
            report_(std::to_string(lines) + " lines of output were not written");
        });
        followTo(&output);
        output.finish();
        if (output.error() == EPIPE) {
            throw ReaderGoneError();
        }
        if (output.error() != 0) {
            throw FailureError("cannot write the output: "
                               + std::string(std::strerror(output.error())));
        }
    }
    finishVipLog();
}

/// Null for no output.
void LiveAgent::followTo(OutputQueue* output) {
    output_ = output;
    service_.emplace(clock_);
    while (!stopped_ && (output == nullptr || output->error() == 0)) {
        turn();
        const bool isReady = ready_->check();
        service_->turned(isReady, {device_->vrfs().size(), feed_->size(), missingVrfs()});
        if (service_->isReloading() && isQuiet()) {
            service_->reloadSettled();
        }
    }
    service_->stops();
    if (server_) {
        server_->stop();
    }
    output_ = nullptr;
}

void LiveAgent::listen(const Listening& where) {
    try {
        if (where.place.path.empty()) {
            throw FailureError("no runtime folder to listen in");
        }
        server_.emplace(where.place, view(), report_);
    } catch (const FailureError& error) {
        if (!where.isDefault) {
            throw;
        }
        report_(std::string(error.what()) + "; nobody can ask this agent");
    }
}

void LiveAgent::onChange(const RouteFeed::Event& event) {
    if (installer_) {
        installer_->routeChanged(event.key);
    }
    const bool isWatched = server_ && server_->isWatched();
    if (!isWatched && output_ == nullptr) {
        return;
    }
    ChangeRow row{ClockTime{clock_->now()}, event.kind, event.vrf.value(), {}};
    if (event.kind == ChangeKind::goes) {
        row.route.prefix = event.key.prefix();
    } else {
        row.route = lookup_->row(event.route);
    }
    if (isWatched || form_.json) {
        line_.clear();
        appendJsonLine(line_, row);
    }
    if (isWatched) {
        server_->changeIs(line_);
    }
    if (output_ == nullptr) {
        return;
    }
    if (!form_.json) {
        line_.clear();
        appendChangeText(line_, row, form_.colour);
    }
    output_->append(messages_.timestamps() ? stamped(line_, form_.json) : line_);
}

void LiveAgent::turn() {
    activityManager_.runOnce(longestSleep);
    drains_->turned();
    reportRing(report_);
    room_.check(**root_, clock_->now(), report_);
    // After a restart the routes count as complete only when all there is has been seen.
    if (!verifying_ && device_->isLearned()) {
        DevicePatch patch;
        patch.startReadyVerification = Edit<bool>::to(true);
        inputs_->apply(patch);
        verifying_ = true;
    }
    checkVipLog();
    if (installer_) {
        installer_->turn();
    }
    if (server_) {
        server_->turned();
    }
}

/// Whether nothing is pending and every VRF is ready, or as ready as it can be: the tables may have
/// no room for all of it.
bool LiveAgent::isComplete() const {
    if (!device_->isSettled() || !isQuiet()) {
        return false;
    }
    // After a restart none is ready before all have been learned, so where one cannot be that
    // would never come.
    const bool canBeReady = verifying_ || !inputs_->grState()->gracefulRestart();
    return std::ranges::all_of(device_->vrfs(), [&](const L3::VrfName& name) {
        const auto* container = (*root_)->containerSm(name);
        return container != nullptr
               && (!canBeReady || container->intfBacklog()->waitingForRoom() > 0
                   || ReadyVrfs::isReady(**root_, name));
    });
}

AgentStatusRow LiveAgent::status() const {
    const auto netlink = device_->counts();
    const auto clients = server_ ? server_->counts() : SocketServer::Counts();
    AgentStatusRow row;
    row.version = DIRECTNET_VERSION;
    row.pid = ::getpid();
    row.uptime = {clock_->now() - started_};
    row.isReady = ready_->missing().empty();
    row.drains = drains_->drains();
    row.longestDrain = {drains_->longest()};
    row.overruns = netlink.overruns;
    row.relistings = netlink.relistings;
    row.clients = clients.present;
    row.droppedClients = clients.dropped;
    row.refusedClients = clients.refused;
    row.droppedOutput = output_ == nullptr ? 0 : output_->droppedInAll();
    row.droppedMessages = messages_.dropped();
    row.reloads = config_.record();
    return row;
}

bool LiveAgent::isQuiet() const {
    return clock_->nextWakeup() > clock_->now()
           && std::ranges::all_of((*root_)->containerSm(), [](const auto& container) {
                  return container->intfBacklog()->backlog().empty()
                         || container->intfBacklog()->waitingForRoom() > 0;
              });
}

std::string LiveAgent::missingVrfs() const {
    std::string names;
    for (const L3::VrfName& vrf : ready_->missing()) {
        names += (names.empty() ? "" : ", ") + vrf.value();
    }
    return names;
}

std::vector<L3::VrfName> LiveAgent::notReady(const std::vector<L3::VrfName>& vrfs) const {
    if (vrfs.empty()) {
        return ready_->missing();
    }
    std::vector<L3::VrfName> missing = vrfs;
    std::erase_if(missing,
                  [&](const L3::VrfName& vrf) { return ReadyVrfs::isReady(**root_, vrf); });
    return missing;
}

void LiveAgent::onSignal(int signal) {
    if (signal != SIGHUP || !config_.isThere()) {
        stopped_ = true;
        return;
    }
    try {
        reload();
    } catch (const FailureError& error) {
        messages_.report(error.what(), Severity::error);
    }
}

std::vector<ConfigChangeRow> LiveAgent::reload() {
    if (service_) {
        service_->reloadBegins();
    }
    std::string outcome = "the configuration was read again";
    const auto tell = [&] {
        if (service_) {
            service_->reloadEnded(outcome);
        }
    };
    try {
        auto changes = config_.reload(*device_);
        tell();
        return changes;
    } catch (const FailureError& error) {
        outcome = error.what();
        tell();
        throw;
    }
}

} // namespace Agent
