#include <algorithm>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "agent/device/AgentRoot.h"
#include "agent/document/DevicePatchReader.h"
#include "agent/explain/Explanation.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "tests/agent/Program.h"
#include "tests/library/DeviceModel.h"

namespace Agent {
namespace {

using nlohmann::json;
using Routing::DirectNet::DeviceModel;
using testing::HasSubstr;
using TestSupport::runProgram;
using Texts = std::vector<std::string>;
using Contributor = DeviceModel::Contributor;

const Texts vrfs{"default", "red", "blue", "green"};
const Texts intfs{"Vl5", "e1", "e10", "e2"}; // in their order

/// A device with few names of everything, so that much of it meets.
class RandomTold {
  public:
    explicit RandomTold(std::uint32_t seed) : random_(seed) {
        model.subnetRoutes = true;
        for (unsigned id = 0; id < vrfs.size(); ++id) {
            if (below(5) != 0) {
                model.ids[vrfs[id]] = id + 1;
            }
            if (below(5) != 0) {
                model.statuses[vrfs[id]] = {below(5) != 0, id < 2 ? "default" : "ns1"};
            }
        }
        for (int i = 0; i < 12; ++i) {
            model.devices[oneOf({"default", "ns1"})][oneOf(intfs)] = below(4) != 0;
            model.virtualIps[{oneOf(vrfs), virtualAddress()}][oneOf(intfs)] = true;
            addLeak();
        }
        for (int i = 0; i < 40; ++i) {
            addAddress(model.ipv4[oneOf(vrfs)][oneOf(intfs)]);
            model.ipv6[oneOf(vrfs)][oneOf(intfs)][address6()] = below(6) != 0;
        }
    }

    std::size_t below(std::size_t n) { return random_() % n; }
    std::string address(bool isIpv4) {
        const auto part = [&](std::size_t n) { return std::to_string(below(n)); };
        return isIpv4
                   ? "10." + part(2) + '.' + part(2) + '.' + part(9)
                   : Lanx::Ip6Addr::fromString("2001:db8:" + part(2) + "::" + part(9)).toString();
    }

    DeviceModel model;

  private:
    std::string oneOf(const Texts& texts) { return texts[below(texts.size())]; }
    std::string virtualAddress() { return below(2) != 0 ? address(true) + "/24" : address(false); }
    std::string address6() {
        return below(8) == 0 ? oneOf({"fe80::1/64", "::/64", "2001:db8::1/0"})
                             : address(false) + oneOf({"/32", "/64", "/126", "/128"});
    }
    void addAddress(DeviceModel::Ipv4& ipv4) {
        const std::string own =
            below(8) == 0 ? oneOf({"0.0.0.0/24", "169.254.1.1/16", "10.0.0.9/0"})
                          : address(true) + oneOf({"/8", "/16", "/24", "/30", "/31", "/32"});
        if (ipv4.primary.empty()) {
            ipv4.primary = own;
        } else if (ipv4.primary != own) {
            ipv4.secondaries[own] = below(6) != 0;
        }
    }
    void addLeak() {
        const std::string source = oneOf(vrfs);
        const std::string dest = oneOf(vrfs);
        const bool isIpv4 = below(2) != 0;
        const auto at =
            Lanx::IpGenAddrWithMask::fromString(address(isIpv4) + (isIpv4 ? "/24" : "/64"));
        if (model.ids.contains(source) && model.ids.contains(dest)) {
            model.leaks.insert({model.ids[source], at.subnet().toString(), model.ids[dest]});
        }
    }

    std::mt19937 random_;
};

std::string nameOf(const DeviceModel& model, unsigned id) {
    return std::ranges::find(model.ids, id, [](const auto& entry) { return entry.second; })->first;
}

std::string familyOf(const std::string& address) {
    return address.find(':') == std::string::npos ? "ipv4" : "ipv6";
}

json documentOf(const DeviceModel& model) {
    json all{{"ipv6", model.ipv6}, {"virtualIps", {{"subnetRoutes", true}}}};
    for (const auto& [vrf, id] : model.ids) {
        all["vrfs"][vrf]["id"] = id;
    }
    for (const auto& [vrf, status] : model.statuses) {
        all["vrfs"][vrf]["status"] = {{"active", status.active}, {"netns", status.netns}};
    }
    for (const auto& [netns, devices] : model.devices) {
        for (const auto& [intf, running] : devices) {
            all["kernel"][netns][intf]["running"] = running;
        }
    }
    for (const auto& [vrf, told] : model.ipv4) {
        for (const auto& [intf, ipv4] : told) {
            all["ipv4"][vrf][intf] = {{"address", ipv4.primary}, {"secondary", ipv4.secondaries}};
        }
    }
    for (const auto& [key, carriers] : model.virtualIps) {
        all["virtualIps"][familyOf(key.second)][key.first][key.second] = carriers;
    }
    for (const auto& [source, prefix, dest] : model.leaks) {
        all["leaks"][familyOf(prefix)][nameOf(model, source)][prefix][nameOf(model, dest)] = true;
    }
    return all;
}

/// An agent on a simulated clock that has been told all of it.
class ToldAgent {
  public:
    explicit ToldAgent(const json& document) { tell(document); }

    void tell(const json& patch) { inputs_.apply(readDevicePatch(patch)); }
    void settle() { loop_.runUntilIdle(); }

    /// The objects that `explain --json` prints.
    std::vector<json> explained(const std::string& what, const std::string& vrf = {}) {
        std::ostringstream out;
        const auto printer = printExplanationObjects(out, what);
        printAnswer(*explain({*root_, inputs_, *clock_}, readExplainTarget(what),
                             vrf.empty() ? std::nullopt : std::optional(L3::VrfName(vrf))),
                    *printer);
        std::vector<json> objects;
        std::istringstream lines(out.str());
        for (std::string line; std::getline(lines, line);) {
            objects.push_back(json::parse(line));
        }
        return objects;
    }

  private:
    Orb::Ptr<Orb::SimulatedClock> clock_ = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager loop_{clock_};
    DeviceInputs inputs_{Orb::makePtr<Kiln::TaskScheduler>(clock_), false};
    AgentRoot root_{inputs_};
};

std::string decidedBy(const Contributor& left, const Contributor& right) {
    return left.intf != right.intf             ? "interface name"
           : left.address != right.address     ? "address"
           : left.sourceVrf != right.sourceVrf ? "source VRF id"
           : left.isVirtual != right.isVirtual ? "own before virtual"
                                               : "route type";
}

json expectedContributors(const DeviceModel& model, const std::set<Contributor>& all) {
    static const std::map<unsigned, std::string> vias{{11, "connected"},
                                                      {1, "receive"},
                                                      {2, "receive"},
                                                      {3, "receive-broadcast"},
                                                      {4, "directed-broadcast"}};
    json list = json::array();
    for (const Contributor& contributor : all) {
        const bool isLocal = contributor.sourceVrf == DeviceModel::local;
        json row{{"intf", contributor.intf},
                 {"address", contributor.address.toString()},
                 {"kind", !isLocal                ? "leaked"
                          : contributor.isVirtual ? "virtual"
                                                  : "own"},
                 {"type", contributor.type},
                 {"via", vias.at(contributor.type)},
                 {"wins", list.empty()},
                 {"queued", false}};
        if (!isLocal) {
            row["sourceVrf"] = nameOf(model, contributor.sourceVrf);
        }
        if (all.size() > 1) {
            row["by"] =
                decidedBy(contributor, list.empty() ? *std::next(all.begin()) : *all.begin());
        }
        list.push_back(row);
    }
    return list;
}

/// An address that an interface was told of, and why it contributes nothing, or not all, by a plain
/// look at the device.
struct Listed {
    std::string text;
    const char* role;
    std::string why;
};

std::string whyNot(DeviceModel& model, const std::string& vrf, const std::string& intf,
                   const std::string& text, bool inUse) {
    std::string ofPlace;
    if (!model.hasContainer(vrf)) {
        ofPlace = "VRF " + vrf + " is not up: "
                  + (!model.ids.contains(vrf)       ? "it has no id"
                     : model.statuses.contains(vrf) ? "it is not active"
                                                    : "it is not set up on this device");
    } else {
        const std::string netns = vrf == "default" ? vrf : model.statuses.at(vrf).netns;
        const auto& devices = model.devices[netns];
        const auto device = devices.find(intf);
        ofPlace = device == devices.end() ? "no device in network namespace " + netns
                  : device->second        ? ""
                                          : "not running";
    }
    const std::string own = !inUse                                    ? "listed as not in use"
                            : text == "0.0.0.0/24" || text == "::/64" ? "the zero address"
                            : text == "fe80::1/64"                    ? "link-local"
                            : text.ends_with("/0") ? "length 0: its subnet never becomes a route"
                                                   : "";
    return ofPlace + (ofPlace.empty() || own.empty() ? "" : "; ") + own;
}

std::vector<Listed> listedOn(DeviceModel& model, const std::string& vrf, const std::string& intf) {
    std::vector<Listed> all;
    const DeviceModel::Ipv4& ipv4 = model.ipv4[vrf][intf];
    if (!ipv4.primary.empty()) {
        all.push_back({ipv4.primary, "primary", whyNot(model, vrf, intf, ipv4.primary, true)});
    }
    for (const auto& listed : {ipv4.secondaries, model.ipv6[vrf][intf]}) {
        std::map<Lanx::IpGenAddrWithMask, bool> inOrder;
        for (const auto& [text, inUse] : listed) {
            inOrder[Lanx::IpGenAddrWithMask::fromString(text)] = inUse;
        }
        for (const auto& [address, inUse] : inOrder) {
            const std::string text = address.toString();
            const bool isIpv4 = address.af() == Lanx::AddressFamily::ipv4;
            all.push_back(
                {text, isIpv4 ? "secondary" : "own", whyNot(model, vrf, intf, text, inUse)});
        }
    }
    return all;
}

/// The addresses around that one, none of which contributes.
json candidatesOf(DeviceModel& model, const std::string& vrf, const Lanx::IpGenAddr& address) {
    json candidates = json::array();
    for (const std::string& intf : intfs) {
        for (const Listed& listed : listedOn(model, vrf, intf)) {
            const auto own = Lanx::IpGenAddrWithMask::fromString(listed.text);
            if (own.len() > 0 && own.subnet().contains(address)) {
                candidates.push_back({{"intf", intf},
                                      {"address", listed.text},
                                      {"role", listed.role},
                                      {"vrf", vrf},
                                      {"whyNot", listed.why}});
            }
        }
    }
    return candidates;
}

/// What is to be said of an address in a VRF, by all routes that the model has there.
json expectedOf(DeviceModel& model, const std::string& vrf, const Lanx::IpGenAddr& address) {
    json expected{{"vrf", vrf}, {"queued", false}};
    std::optional<unsigned> longest;
    for (const auto& [prefix, all] : model.contributors(vrf)) {
        if (!prefix.contains(address) || (longest && prefix.len() < *longest)) {
            continue;
        }
        longest = prefix.len();
        expected["prefix"] = prefix.toString();
        expected["contributors"] = expectedContributors(model, all);
        const json& winner = expected["contributors"][0];
        expected["route"] = {
            {"intf", winner["intf"]}, {"type", winner["type"]}, {"via", winner["via"]}};
        if (winner.contains("sourceVrf")) {
            expected["route"]["sourceVrf"] = winner["sourceVrf"];
        }
    }
    if (!longest) {
        expected["prefix"] = Lanx::IpGenPrefix::host(address).toString();
        expected["route"] = nullptr;
        expected["why"] = "nobody contributes to it";
        expected["contributors"] = json::array();
        if (const json candidates = candidatesOf(model, vrf, address); !candidates.empty()) {
            expected["candidates"] = candidates;
        }
    }
    return expected;
}

TEST(Explain, AddressesOfARandomDeviceAgreeWithAModelOfIt) {
    int routes = 0;
    int withCandidates = 0;
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        RandomTold told(seed);
        const json document = documentOf(told.model);
        ToldAgent agent(document);
        agent.settle();
        for (int i = 0; i < 50; ++i) {
            const std::string text = told.address(told.below(2) == 0);
            for (const std::string& vrf : told.model.vrfsWithContainer()) {
                const json expected =
                    expectedOf(told.model, vrf, Lanx::IpGenAddr::fromString(text));
                ASSERT_THAT(agent.explained(text, vrf), testing::ElementsAre(expected))
                    << "seed " << seed << ' ' << text << '\n'
                    << document;
                routes += expected["route"].is_null() ? 0 : 1;
                withCandidates += expected.contains("candidates") ? 1 : 0;
            }
        }
    }
    EXPECT_GT(routes, 1000);
    EXPECT_GT(withCandidates, 50);
}

/// What the model has of an address: "PREFIX TYPE", behind the VRF that it is leaked to.
std::set<std::string> contributionsOf(const DeviceModel& model, const std::string& vrf,
                                      const std::string& intf, const std::string& text,
                                      bool isVirtual) {
    std::set<std::string> all;
    const auto add = [&](const std::string& in, unsigned source, bool fromVirtual) {
        for (const auto& [prefix, contributors] : model.contributors(in)) {
            for (const Contributor& one : contributors) {
                if (one.intf == intf && one.address.toString() == text && one.sourceVrf == source
                    && one.isVirtual == fromVirtual) {
                    all.insert((source == DeviceModel::local ? "" : in + ' ') + prefix.toString()
                               + ' ' + std::to_string(one.type)
                               + (one == *contributors.begin() ? " wins" : ""));
                }
            }
        }
    };
    if (model.hasContainer(vrf)) {
        add(vrf, DeviceModel::local, isVirtual);
        const bool hasSubnet = std::ranges::any_of(
            all, [](const std::string& one) { return one.find(" 11") != std::string::npos; });
        for (const std::string& other : hasSubnet ? model.vrfsWithContainer() : Texts()) {
            add(other, model.ids.at(vrf), false);
        }
    }
    return all;
}

std::set<std::string> contributionsIn(const json& address) {
    std::set<std::string> all;
    for (const json& row : address["contributes"]) {
        all.insert((row.contains("vrf") ? row["vrf"].get<std::string>() + ' ' : "")
                   + row["prefix"].get<std::string>() + ' ' + row["type"].dump()
                   + (row["wins"] ? " wins" : ""));
    }
    return all;
}

TEST(Explain, InterfacesOfARandomDeviceSayWhatEachAddressContributesOrWhyNot) {
    std::map<bool, int> seen; // by whether there is a reason
    int virtuals = 0;
    for (std::uint32_t seed = 100; seed < 140; ++seed) {
        RandomTold told(seed);
        const json document = documentOf(told.model);
        ToldAgent agent(document);
        agent.settle();
        for (const std::string& vrf : vrfs) {
            for (const std::string& intf : intfs) {
                const std::vector<Listed> listed = listedOn(told.model, vrf, intf);
                if (listed.empty()) {
                    continue;
                }
                const std::vector<json> objects = agent.explained(intf, vrf);
                ASSERT_EQ(objects.size(), 1U) << seed << ' ' << vrf << ' ' << intf;
                std::size_t next = 0;
                for (const json& address : objects[0]["addresses"]) {
                    const bool isVirtual = address["role"] == "virtual";
                    const std::string text = address["address"];
                    EXPECT_EQ(contributionsIn(address),
                              contributionsOf(told.model, vrf, intf, text, isVirtual))
                        << address;
                    const std::string why = address.value("why", "");
                    if (isVirtual) {
                        EXPECT_EQ(why.empty(), told.model.hasContainer(vrf)) << why;
                        ++virtuals;
                        continue;
                    }
                    ASSERT_LT(next, listed.size());
                    EXPECT_EQ(text, listed[next].text);
                    EXPECT_EQ(address["role"], listed[next].role);
                    EXPECT_EQ(why, listed[next++].why) << text;
                    ++seen[!why.empty()];
                }
                EXPECT_EQ(next, listed.size());
                ASSERT_FALSE(HasFailure()) << seed << ' ' << vrf << ' ' << intf << document;
            }
        }
    }
    EXPECT_GT(seen[true], 300);
    EXPECT_GT(seen[false], 300);
    EXPECT_GT(virtuals, 100);
}

TEST(Explain, RoutesThatAreNotWrittenYetAreSaidToBeQueued) {
    ToldAgent agent(json::parse(R"({"vrfs":{"default":{"id":0}},"kernel":{"default":{"e1":{}}},
        "ipv4":{"default":{"e1":{"address":"10.1.1.5/24"}}}})"));
    const json queued = agent.explained("10.1.1.5").at(0);
    EXPECT_EQ(queued["prefix"], "10.1.1.5/32");
    EXPECT_TRUE(queued["route"].is_null());
    EXPECT_EQ(queued["queued"], true);
    EXPECT_EQ(queued["why"], "the next drain writes it");
    EXPECT_EQ(queued["contributors"][0]["queued"], true);
    agent.settle();
    const json written = agent.explained("10.1.1.5").at(0);
    EXPECT_EQ(written["route"]["type"], 1);
    EXPECT_FALSE(written.contains("why"));
    agent.tell(json::parse(
        R"({"ipv4":{"default":{"e1":{"address":null,"secondary":{"10.1.1.9/32":true}}}}})"));
    const json shorter = agent.explained("10.1.1.9").at(0);
    EXPECT_EQ(shorter["prefix"], "10.1.1.0/24");
    EXPECT_EQ(shorter["longer"], json({"10.1.1.9/32"}));
    EXPECT_EQ(shorter["why"], "nobody contributes any more: the next drain removes the route");
}

constexpr const char* twoLinks =
    R"({"set":{"vrfs":{"default":{"id":0}},"kernel":{"default":{"e1":{},"e2":{}}},"ipv4":)"
    R"({"default":{"e1":{"address":"10.0.0.1/30"},"e2":{"address":"10.0.0.3/16"},)"
    R"("e3":{"address":"10.0.0.9/16","unnumbered":"e2"}}}}})";

TEST(Explain, ReplayPrintsWhyAtTheEnd) {
    const struct {
        const char* what;
        int status;
        const char* out;
        const char* err;
    } cases[] = {
        {"10.0.0.3", 0, R"(VRF default 10.0.0.3/32  4 drop-broadcast  e1  directed-broadcast
  INTERFACE  ADDRESS      KIND  TYPE              VIA                 WHY
  e1         10.0.0.1/30  own   4 drop-broadcast  directed-broadcast  wins by interface name
  e2         10.0.0.3/16  own   1 receive         receive             loses by interface name
)",
         ""},
        {"10.9.9.9/32", 0, "10.9.9.9/32  no route\n  nobody contributes to it\n", ""},
        {"e3", 0,
         R"(e3  VRF default, network namespace default, device none
  ADDRESS      ROLE     PREFIX  TYPE  VIA  WHY
  10.0.0.9/16  primary  -       -     -    )"
         "no device in network namespace default; unnumbered: borrowed from e2\n",
         ""},
        {"e4", 1, "", "directnet: e4 is no prefix, no address and no interface that is there\n"},
        {"10.0.0.1/24", 2, "", "has host bits: the prefix is 10.0.0.0/24, the address 10.0.0.1"},
        {"''", 2, "", "must be a prefix, an address or a name"},
    };
    for (const auto& expected : cases) {
        const auto run =
            runProgram(std::string("replay --explain ") + expected.what + " -", twoLinks);
        EXPECT_EQ(run.status, expected.status) << expected.what;
        EXPECT_EQ(run.out, expected.out);
        EXPECT_THAT(run.err, HasSubstr(expected.err));
    }
}

} // namespace
} // namespace Agent
