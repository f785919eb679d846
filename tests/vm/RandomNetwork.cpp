#include "tests/vm/RandomNetwork.h"

#include "tests/vm/VmTest.h"

namespace TestSupport {

namespace {

const std::vector<std::string> linkNames{"e0", "e1", "e2", "e3", "e4", "br0"};
const std::vector<std::string> deviceNames{"red", "blue", "green", "grey"};

} // namespace

const std::string& RandomNetwork::oneOf(const Texts& texts) {
    return texts[below(static_cast<std::uint32_t>(texts.size()))];
}

void RandomNetwork::step() {
    if (oneIn(6)) {
        flush();
        netns_ = oneOf({"", "ns1", hasSecond_ ? "ns2" : ""});
    }
    Texts links;
    for (const std::string& name : linkNames) {
        if (!links_.contains(name) || links_[name] == netns_) {
            links.push_back(name);
        }
    }
    if (!more_.empty() && oneIn(20)) {
        in(more_);
    }
    const std::uint32_t choice = below(20);
    const std::string link = links.empty() ? "" : oneOf(links);
    if (choice == 0) {
        changeNamespace();
    } else if (choice < 6 || links.empty()) {
        changeVrfDevice();
    } else if (!links_.contains(link)) {
        in("link add " + link + " up type " + (link == "br0" ? "bridge" : "dummy"));
        links_[link] = netns_;
    } else if (choice < 13) {
        changeAddress(link);
    } else {
        changeLink(link);
    }
}

void RandomNetwork::flush() {
    if (!lines_.empty()) {
        ipIn(netns_, lines_);
        lines_.clear();
    }
}

void RandomNetwork::in(const std::string& line) {
    lines_ += line + '\n';
    log_ += "ip " + (netns_.empty() ? "" : "-n " + netns_ + ' ') + line + '\n';
}

std::string RandomNetwork::address() {
    const std::string subnet = std::to_string(below(3));
    const std::string host = std::to_string(1 + below(3));
    if (oneIn(2)) {
        return "fd00:" + subnet + "::" + host + oneOf({"/64", "/64", "/128"});
    }
    return "10." + subnet + ".0." + host + oneOf({"/24", "/24", "/24", "/16", "/31", "/32"});
}

void RandomNetwork::changeAddress(const std::string& link) {
    std::string on = link;
    for (const auto& [name, device] : devices_) {
        if (device.netns == netns_ && oneIn(8)) {
            on = device.name;
        }
    }
    if (oneIn(12)) {
        in("addr flush dev " + on);
    } else {
        in(oneOf({"addr add ", "addr add ", "addr del "}) + address() + " dev " + on);
    }
}

/// What the link may be made a port of.
std::string RandomNetwork::master(const std::string& link) {
    Texts masters;
    for (const auto& [name, device] : devices_) {
        if (device.netns == netns_) {
            masters.push_back("master " + device.name);
        }
    }
    if (link != "br0" && links_.contains("br0") && links_["br0"] == netns_) {
        masters.emplace_back("master br0");
    }
    return masters.empty() || oneIn(4) ? "nomaster" : oneOf(masters);
}

void RandomNetwork::changeLink(const std::string& link) {
    const std::uint32_t choice = below(10);
    if (choice < 5) {
        in("link set " + link + ' ' + master(link));
    } else if (choice < 8) {
        in("link set " + link + oneOf({" up", " up", " down"}));
    } else if (choice < 9) {
        in("link del " + link);
        links_.erase(link);
    } else if (link != "br0") {
        const std::string to = netns_ != "ns2" && hasSecond_ ? "ns2" : "ns1";
        in("link set " + link + " netns " + to + " up");
        links_[link] = to;
    }
}

void RandomNetwork::changeVrfDevice() {
    const std::uint32_t number = below(static_cast<std::uint32_t>(deviceNames.size()));
    const std::string& name = deviceNames[number];
    const auto found = devices_.find(name);
    if (found == devices_.end()) {
        const std::uint32_t table = 100 * (number + 1) + below(2);
        in("link add " + name + " up type vrf table " + std::to_string(table));
        devices_[name] = {name, netns_};
        return;
    }
    VrfDevice& device = found->second;
    if (device.netns != netns_) {
        return;
    }
    switch (below(4)) {
    case 0:
        in("link del " + device.name);
        devices_.erase(found);
        break;
    case 1: {
        const std::string other = device.name == name ? name + '2' : name;
        in("link set " + device.name + " down\nlink set " + device.name + " name " + other
           + "\nlink set " + other + " up");
        device.name = other;
        break;
    }
    default:
        in("link set " + device.name + oneOf({" up", " down"}));
    }
}

/// The second namespace comes, or goes with all that is in it.
void RandomNetwork::changeNamespace() {
    flush();
    netns_.clear();
    if (hasSecond_) {
        std::erase_if(links_, [](const auto& link) { return link.second == "ns2"; });
        std::erase_if(devices_, [](const auto& device) { return device.second.netns == "ns2"; });
        in("netns del ns2");
    } else {
        in("netns add ns2");
        flush();
        netns_ = "ns2";
        in("link set lo up");
    }
    hasSecond_ = !hasSecond_;
}

} // namespace TestSupport
