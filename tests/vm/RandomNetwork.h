#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace TestSupport {

/// Random commands over links, masters, addresses, VRF devices and a namespace that comes and goes,
/// in the own namespace, ns1 and ns2. There are few names and addresses, so that changes meet, and
/// four VRF devices whose names and tables are never another's.
class RandomNetwork {
  public:
    explicit RandomNetwork(std::uint32_t seed) : random_(seed) {}

    /// A further line of the `ip` utility that commands are made of now and then.
    void alsoDo(const std::string& line) { more_ = line; }

    /// Makes one more command. It is carried out, if it can be, before one in another namespace.
    void step();
    /// Carries out what waits.
    void flush();

    /// The commands so far, one a line.
    const std::string& log() const { return log_; }

  private:
    using Texts = std::vector<std::string>;

    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(random_()) % n; }
    bool oneIn(std::uint32_t n) { return below(n) == 0; }
    const std::string& oneOf(const Texts& texts);
    std::string address();
    std::string master(const std::string& link);
    /// A line of the `ip` utility where changes are made.
    void in(const std::string& line);

    void changeAddress(const std::string& link);
    void changeLink(const std::string& link);
    void changeVrfDevice();
    void changeNamespace();

    struct VrfDevice {
        std::string name;
        std::string netns;
    };

    std::mt19937 random_;
    std::map<std::string, std::string> links_; // by name: the namespace
    std::map<std::string, VrfDevice> devices_; // by first name, those that are there
    bool hasSecond_ = true;                    // namespace ns2
    std::string netns_;                        // of the lines that wait
    std::string lines_;
    std::string more_;
    std::string log_;
};

} // namespace TestSupport
