#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/library/DeviceModel.h"
#include "tests/support/LibraryHarness.h"

namespace Routing::DirectNet {

/// Changes a device at random, in the library and in the model alike. There are few names of
/// everything, so that changes meet.
class RandomDevice {
  public:
    RandomDevice(LibraryHarness& harness, std::uint32_t seed) : harness_(harness), random_(seed) {}

    const DeviceModel& model() const { return model_; }

    /// One change, and now and then some time after it.
    void step();

    /// One change from inside a notification: of something else than the change that is under way,
    /// which may be in the middle of it. Then, too, some time may pass.
    void interject();

    /// Called before the root is stopped and started again.
    std::function<void()> beforeRestart = [] {};

    /// The changes so far, one a line.
    const std::string& log() const { return log_; }

  private:
    using Texts = std::vector<std::string>;

    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(random_()) % n; }
    bool oneIn(std::uint32_t n) { return below(n) == 0; }
    const std::string& oneOf(const Texts& texts);
    std::string vrf();
    std::string intf();
    void note(const std::string& what) { log_ += what + '\n'; }

    /// Takes the flag of what is listed, and nothing for what goes.
    using Apply = std::function<void(std::optional<bool>)>;
    void changeListed(const std::string& what, std::map<std::string, bool>& listed,
                      const std::string& member, const Apply& apply);

    enum class Topic { none, vrfs, devices, addresses, virtualIps, leaks, ribWaits, restart };
    struct Change {
        void (RandomDevice::*make)();
        std::size_t weight;
        Topic topic;
    };
    static const std::vector<Change>& changes();
    const Change& oneOfChanges();

    void changeVrfId();
    void changeVrfStatus();
    void replaceVrfMap();
    void changeDevice();
    void changePrimary();
    void changeSecondary();
    void promoteSecondary();
    void changeIpv6();
    void removeInterfaces();
    void changeSubnetRoutes();
    void changeVirtualIp();
    void removeVirtualIp();
    void changeLeak();
    void removeLeaks();
    void changeRibWaits();
    void restart();
    void letTimePass();

    LibraryHarness& harness_;
    std::mt19937 random_;
    DeviceModel model_;
    std::string log_;
    Topic underWay_ = Topic::none;
};

} // namespace Routing::DirectNet
