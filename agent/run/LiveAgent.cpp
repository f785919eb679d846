#include "agent/run/LiveAgent.h"

#include <algorithm>
#include <csignal>
#include <iostream>
#include <unistd.h>

#include "agent/Errors.h"
#include "agent/run/ChangeText.h"
#include "platform/ringlog/Printable.h"

namespace Agent {

namespace {

/// Seconds for which the event loop sleeps at most.
constexpr double longestSleep = 3600;

void report(const std::string& message) {
    std::string line = "directnet: ";
    Ringlog::appendPrintable(line, message);
    std::cerr << line << std::endl;
}

} // namespace

LiveAgent::LiveAgent(const Options& options)
    : configFile_(options.configFile), signals_(clock_, [this](int signal) { onSignal(signal); }) {
    std::optional<ConfigFile> config;
    if (!configFile_.empty()) {
        config.emplace(configFile_);
    }
    const nlohmann::json document = config ? config->document() : nlohmann::json::object();
    inputs_.emplace(Orb::makePtr<Kiln::TaskScheduler>(clock_),
                    document.value("gracefulRestart", false));
    root_.emplace(*inputs_);
    lookup_.emplace(**root_, *inputs_);
    feed_.emplace(**root_, *inputs_, [this](const RouteFeed::Change& change) { onChange(change); });
    try {
        device_.emplace(*inputs_, clock_, options.vrfs, document, report);
    } catch (const DocumentError& error) {
        throw BadInputError(config ? config->message(error) : error.what());
    }
}

LiveAgent::~LiveAgent() {
    feed_.reset(); // before the root takes all routes back
}

void LiveAgent::runOnce(StatePrinter& printer) {
    while (!stopped_ && !isComplete()) {
        turn();
    }
    if (!stopped_) {
        printer.print(StateView(**root_, *inputs_, clock_->now()), nullptr);
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
        report(vipLog_->failure() + "; this log ends here");
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

void LiveAgent::follow(bool json) {
    OutputQueue output(STDOUT_FILENO);
    output_ = &output;
    json_ = json;
    while (!stopped_ && output.failure().empty()) {
        turn();
    }
    output_ = nullptr;
    output.finish();
    if (!output.failure().empty()) {
        throw FailureError("cannot write the output: " + output.failure());
    }
    finishVipLog();
}

void LiveAgent::listen(const Listening& where) {
    try {
        if (where.path.empty()) {
            throw FailureError("no runtime folder to listen in");
        }
        server_.emplace(where.path, AgentView{**root_, *inputs_, *clock_});
    } catch (const FailureError& error) {
        if (!where.isDefault) {
            throw;
        }
        report(std::string(error.what()) + "; nobody can ask this agent");
    }
}

void LiveAgent::onChange(const RouteFeed::Change& change) {
    const bool watched = server_ && server_->isWatched();
    if (watched || (output_ != nullptr && json_)) {
        line_.clear();
        appendChangeAsJson(line_, clock_->now(), change, *lookup_);
    }
    if (watched) {
        server_->changeIs(line_);
    }
    if (output_ == nullptr) {
        return;
    }
    if (!json_) {
        line_.clear();
        appendChangeAsText(line_, change, *lookup_);
    }
    output_->append(line_);
}

void LiveAgent::turn() {
    activityManager_.runOnce(longestSleep);
    // After a restart the routes count as complete only when all there is has been seen.
    if (!verifying_ && device_->isLearned()) {
        DevicePatch patch;
        patch.startReadyVerification = Change<bool>::to(true);
        inputs_->apply(patch);
        verifying_ = true;
    }
    checkVipLog();
}

/// Whether nothing is pending and every VRF is ready, or as ready as it can be.
bool LiveAgent::isComplete() const {
    if (!device_->isSettled() || clock_->nextWakeup() <= clock_->now()) {
        return false;
    }
    // After a restart none is ready before all have been learned, so where one cannot be that
    // would never come.
    const bool canBeReady = verifying_ || !inputs_->grState()->gracefulRestart();
    const auto isDone = [&](const L3::VrfName& name) {
        const auto* container = (*root_)->containerSm(name);
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
    try {
        const ConfigFile config(configFile_);
        try {
            device_->configure(config.document());
        } catch (const DocumentError& error) {
            report(config.message(error));
        }
    } catch (const std::exception& error) {
        report(error.what());
    }
}

} // namespace Agent
