#include "agent/run/ConfigCheck.h"

#include <optional>

#include "agent/base/Errors.h"
#include "agent/patch/Merge.h"
#include "agent/run/ConfigFile.h"
#include "agent/run/ConfigText.h"
#include "agent/run/ConfiguredVrfs.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/RealClock.h"

namespace Agent {

namespace {

/// Seconds for which the event loop sleeps at most.
constexpr double longestSleep = 60;

} // namespace

void checkConfig(const LiveDevice::Options& options, const std::string& configFile,
                 const std::function<void(const std::string& message)>& report) {
    std::optional<ConfigFile> config;
    if (!configFile.empty()) {
        config.emplace(configFile, readConfigText(configFile));
    }
    const DevicePatch document = config ? config->document() : DevicePatch();
    const Orb::Ptr<Orb::Clock> clock = Orb::makePtr<Orb::RealClock>();
    Orb::ActivityManager activityManager(clock);
    DeviceInputs inputs(Orb::makePtr<Kiln::TaskScheduler>(clock),
                        after<&DevicePatch::gracefulRestart>(document, std::nullopt));
    std::optional<LiveDevice> device;
    try {
        device.emplace(inputs, clock, options, document, report);
    } catch (const DocumentError& error) {
        throw BadInputError(config ? config->message(error) : error.what());
    }
    while (!device->isSettled()) {
        activityManager.runOnce(longestSleep);
    }
    const std::set<L3::VrfName> named = vrfsNamedBy(document);
    for (const KnownVrf& vrf : device->knownVrfs()) {
        if (named.contains(vrf.name) && !vrf.obstacle.empty()) {
            report(configFile + ": VRF " + vrf.name.value() + ": " + vrf.obstacle);
        }
    }
}

} // namespace Agent
