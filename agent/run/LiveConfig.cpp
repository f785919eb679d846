#include "agent/run/LiveConfig.h"

#include <utility>

#include "agent/base/Errors.h"
#include "agent/base/WallTime.h"
#include "agent/patch/Changes.h"
#include "agent/run/ConfigText.h"
#include "agent/run/LiveDevice.h"

namespace Agent {

namespace {

template <typename Prefix>
bool hasAny(const Edit<LeakPatch<Prefix>>& leaks) {
    return leaks.value() != nullptr && !isEmpty(*leaks.value());
}

bool hasLeaks(const DevicePatch& config) {
    const LeaksPatch* leaks = config.leaks.value();
    return leaks != nullptr && (hasAny(leaks->ipv4) || hasAny(leaks->ipv6));
}

ConfigChangeRow rowOf(const DocumentChange& change) {
    if (change.after.empty()) {
        return {ChangeKind::goes, change.pointer, std::nullopt};
    }
    return {change.before.empty() ? ChangeKind::comes : ChangeKind::changes, change.pointer,
            change.after};
}

} // namespace

LiveConfig::LiveConfig(std::string path, bool externalLeaks, Report report)
    : path_(std::move(path)), externalLeaks_(externalLeaks), report_(std::move(report)) {
    if (!path_.empty()) {
        file_.emplace(path_, readConfigText(path_));
        checkLeaks(file_->document());
    }
}

std::vector<ConfigChangeRow> LiveConfig::reload(LiveDevice& device) {
    record_.last = wallTimeText(wallNow());
    record_.failure.reset();
    try {
        auto changes = readAgain(device);
        ++record_.succeeded;
        return changes;
    } catch (const FailureError& error) {
        ++record_.failed;
        record_.failure = error.what();
        throw;
    }
}

std::vector<ConfigChangeRow> LiveConfig::readAgain(LiveDevice& device) {
    if (!isThere()) {
        throw FailureError("there is no configuration file to read again");
    }
    if (path_ == "-") {
        throw FailureError("standard input is read as a configuration at the start only");
    }
    const DevicePatch before = device.config();
    try {
        const ConfigFile file(path_, readConfigText(path_));
        try {
            device.configure(file.document());
        } catch (const DocumentError& error) {
            throw FailureError(file.message(error));
        }
    } catch (const std::exception& error) {
        throw FailureError(error.what());
    }
    checkLeaks(device.config());
    std::vector<ConfigChangeRow> rows;
    for (const DocumentChange& change : changesBetween(before, device.config())) {
        rows.push_back(rowOf(change));
    }
    return rows;
}

/// Says it once when the configuration has leaks that do not count.
void LiveConfig::checkLeaks(const DevicePatch& document) {
    if (externalLeaks_ && !saidLeaks_ && hasLeaks(document)) {
        report_("the configuration's leaks are not used: --leaks is external");
        saidLeaks_ = true;
    }
}

} // namespace Agent
