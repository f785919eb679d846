#include "agent/run/LiveAgent.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <unistd.h>

#include "agent/base/Errors.h"
#include "agent/output/OutputFile.h"
#include "agent/patch/Merge.h"
#include "agent/ring/RingPlace.h"
#include "agent/run/ConfigText.h"
#include "agent/topics/ChangeRow.h"
#include "agent/topics/StateWalk.h"

namespace Agent {

namespace {

/// Seconds for which the event loop sleeps at most.
constexpr double longestSleep = 3600;
/// Bytes of changes that may wait for whoever reads them on standard output.
constexpr std::size_t outputCapacity = std::size_t{64} << 20U;

std::optional<std::string> textOf(const std::string& configFile) {
    return configFile.empty() ? std::nullopt : std::optional(readConfigText(configFile));
}

template <typename Prefix>
bool hasAny(const Edit<LeakPatch<Prefix>>& leaks) {
    return leaks.value() != nullptr && !isEmpty(*leaks.value());
}

bool hasLeaks(const DevicePatch& config) {
    const LeaksPatch* leaks = config.leaks.value();
    return leaks != nullptr && (hasAny(leaks->ipv4) || hasAny(leaks->ipv6));
}

} // namespace

// Signals are taken only when the configuration has been read: standard input may keep it waiting.
LiveAgent::LiveAgent(const Options& options) : LiveAgent(options, textOf(options.configFile)) {}

LiveAgent::LiveAgent(const Options& options, std::optional<std::string> configText)
    : configFile_(options.configFile), externalLeaks_(options.externalLeaks),
      signals_(std::in_place, clock_, [this](int signal) { onSignal(signal); }) {
    std::optional<ConfigFile> config;
    if (configText) {
        config.emplace(configFile_, std::move(*configText));
    }
    const DevicePatch document = config ? config->document() : DevicePatch();
    checkLeaks(document);
    start(options, after<&DevicePatch::gracefulRestart>(document, std::nullopt));
    reportRing(report_);
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

/// Says it once when the configuration has leaks that do not count.
void LiveAgent::checkLeaks(const DevicePatch& config) {
    if (externalLeaks_ && !saidLeaks_ && hasLeaks(config)) {
        report_("the configuration's leaks are not used: --leaks is external");
        saidLeaks_ = true;
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
    const OutputFile file(STDOUT_FILENO);
    OutputQueue output(file, outputCapacity, [this](std::size_t lines) {
        report_(std::to_string(lines) + " lines of output were not written");
    });
    output_ = &output;
    form_ = form;
    while (!stopped_ && output.error() == 0) {
        turn();
    }
    output_ = nullptr;
    output.finish();
    if (output.error() == EPIPE) {
        throw ReaderGoneError();
    }
    if (output.error() != 0) {
        throw FailureError("cannot write the output: "
                           + std::string(std::strerror(output.error())));
    }
    finishVipLog();
}

void LiveAgent::listen(const Listening& where) {
    try {
        if (where.path.empty()) {
            throw FailureError("no runtime folder to listen in");
        }
        server_.emplace(where.path, view());
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
    output_->append(line_);
}

void LiveAgent::turn() {
    activityManager_.runOnce(longestSleep);
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
}

/// Whether nothing is pending and every VRF is ready, or as ready as it can be: the tables may have
/// no room for all of it.
bool LiveAgent::isComplete() const {
    if (!device_->isSettled() || clock_->nextWakeup() <= clock_->now()) {
        return false;
    }
    // After a restart none is ready before all have been learned, so where one cannot be that
    // would never come.
    const bool canBeReady = verifying_ || !inputs_->grState()->gracefulRestart();
    const auto isDone = [&](const L3::VrfName& name) {
        const auto* container = (*root_)->containerSm(name);
        if (container != nullptr && container->intfBacklog()->waitingForRoom() > 0) {
            return true;
        }
        return container != nullptr && container->intfBacklog()->backlog().empty()
               && (!canBeReady
                   || (container->vrfReadyStatus()->v4DirectNetsReady()
                       && container->vrfReadyStatus()->v6DirectNetsReady()));
    };
    const auto& vrfs = device_->vrfs();
    return std::all_of(vrfs.begin(), vrfs.end(), isDone);
}

void LiveAgent::onSignal(int signal) {
    if (signal == SIGHUP && !configFile_.empty()) {
        reload();
    } else {
        stopped_ = true;
    }
}

void LiveAgent::reload() {
    if (configFile_ == "-") {
        report_("standard input is read as a configuration at the start only");
        return;
    }
    try {
        const ConfigFile config(configFile_, readConfigText(configFile_));
        checkLeaks(config.document());
        try {
            device_->configure(config.document());
        } catch (const DocumentError& error) {
            report_(config.message(error));
        }
    } catch (const std::exception& error) {
        report_(error.what());
    }
}

} // namespace Agent
