#include "agent/run/LiveVrfs.h"

#include <gtest/gtest.h>

#include "tests/agent/PatchJson.h"

namespace Agent {
namespace {

using json = nlohmann::json;
using TestSupport::PatchJson;

Linux::VrfDevice device(int index, const std::string& name, std::uint32_t table) {
    return {index, Lanx::IntfId(name), table};
}

/// VRFs, and the section "vrfs" of the document that follows from them.
class LiveVrfsTest : public testing::Test {
  protected:
    void take() {
        for (const LiveVrfs::Change& change : vrfs.takeChanges()) {
            DevicePatch patch;
            vrfs.describe(change, patch.vrfs.make());
            document.merge_patch(PatchJson::of(patch)["vrfs"]);
        }
    }
    void configure(const std::string& name, unsigned id) {
        DevicePatch config;
        config.vrfs.make()[name].make().id.make() = LiveVrfs::VrfId(id);
        vrfs.idsAre(vrfs.idsWith(config));
    }
    json idsOfThoseUp() {
        json ids = json::object();
        for (const auto& [name, vrf] : document.items()) {
            if (name == "default" || vrf.contains("status")) {
                ids[name] = vrf["id"];
            }
        }
        return ids;
    }

    std::vector<std::string> said;
    LiveVrfs vrfs{{{"default", "default"}, {"red", "nsred"}},
                  [this](const std::string& message) { said.push_back(message); }};
    json document = json::object();
};

TEST_F(LiveVrfsTest, TheFirstKeepsANameOrAnIdAndWhoWaitsGetsItWhenItIsFree) {
    vrfs.namespaceIs("default");
    vrfs.devicesAre("default", {device(5, "red", 50), device(6, "blue", 100),
                                device(7, "green", 100), device(8, "odd", 16777215)});
    take();
    EXPECT_EQ(idsOfThoseUp(), json::parse(R"({"default": 0, "blue": 100})"));
    const std::vector<std::string> obstacles{
        "VRF device red of namespace default is left out: its name is that of the VRF of namespace "
        "nsred",
        "VRF device green of namespace default is left out: id 100 is taken by VRF blue",
        "VRF device odd of namespace default is left out: its table 16777215 cannot be an id"};
    EXPECT_EQ(said, obstacles);

    vrfs.namespaceIs("nsred");
    vrfs.devicesAre("nsred", {device(5, "blue", 200), device(6, "default", 300)});
    take();
    take();
    EXPECT_EQ(idsOfThoseUp(), json::parse(R"({"default": 0, "blue": 100, "red": 1})"));
    EXPECT_EQ(said.size(), 5U) << "each once";

    vrfs.devicesAre("default", {device(7, "green", 100)});
    take();
    EXPECT_EQ(idsOfThoseUp(),
              json::parse(R"({"default": 0, "blue": 200, "red": 1, "green": 100})"));
    EXPECT_EQ(document["blue"]["status"]["netns"], "nsred");

    vrfs.namespaceDel("nsred");
    take();
    EXPECT_EQ(idsOfThoseUp(), json::parse(R"({"default": 0, "green": 100})"));
    vrfs.devicesAre("default", {device(7, "green", 1)});
    vrfs.namespaceIs("nsred");
    take();
    EXPECT_EQ(idsOfThoseUp(), json::parse(R"({"default": 0, "green": 1, "red": 2})"))
        << "a device made again with another table; the namespace's id is gone meanwhile";
}

TEST_F(LiveVrfsTest, ConfiguredIdGoesBeforeTheTableAndTheTableCountsAgainWithoutIt) {
    configure("blue", 7);
    vrfs.namespaceIs("default");
    vrfs.devicesAre("default", {device(5, "blue", 100), device(6, "seven", 7)});
    take();
    EXPECT_EQ(idsOfThoseUp(), json::parse(R"({"default": 0, "blue": 7})"));

    configure("other", 9);
    EXPECT_EQ(vrfs.ids().find("blue"), LiveVrfs::VrfId(100));
    take();
    EXPECT_EQ(vrfs.ids().find("seven"), LiveVrfs::VrfId(7));
    EXPECT_EQ(vrfs.up(), (std::set<L3::VrfName>{"default", "blue", "seven"}));
}

} // namespace
} // namespace Agent
