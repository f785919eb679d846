#include "agent/document/ConfigDocument.h"

#include <nlohmann/json.hpp>

#include "agent/document/DevicePatchReader.h"
#include "agent/document/JsonText.h"
#include "agent/patch/DocumentPlace.h"
#include "agent/patch/Merge.h"

namespace Agent {

namespace {

using json = nlohmann::json;

constexpr const char* learned = "is learned from the kernel and may not stand here";

void checkVrf(const json& vrf, const DocumentPlace& place, bool isDefault) {
    if (!vrf.is_object()) {
        return; // refused by the schema
    }
    if (vrf.contains("status")) {
        DocumentPlace(place, "status").refuse(learned);
    }
    const auto id = vrf.find("id");
    if (id != vrf.end() && id->is_number() && (*id == 0) != isDefault) {
        DocumentPlace(place, "id")
            .refuse(isDefault ? "VRF default has id 0" : "0 is the id of VRF default");
    }
}

/// Refuses what of the device document may not stand in a configuration.
void checkKeys(const json& document) {
    const DocumentPlace root;
    if (!document.is_object()) {
        root.refuse("must be an object");
    }
    for (const char* key : {"kernel", "ipv4", "ipv6"}) {
        if (document.contains(key)) {
            DocumentPlace(root, key).refuse(learned);
        }
    }
    if (document.contains("startReadyVerification")) {
        DocumentPlace(root, "startReadyVerification").refuse("is the agent's own to decide");
    }
    const auto vrfs = document.find("vrfs");
    if (vrfs != document.end() && vrfs->is_object()) {
        const DocumentPlace place(root, "vrfs");
        for (const auto& item : vrfs->items()) {
            checkVrf(item.value(), DocumentPlace(place, item.key()),
                     item.key() == L3::VrfName::defaultVrf().value());
        }
    }
}

} // namespace

DevicePatch readConfigDocument(std::string_view text) {
    const json parsed = parseJson(text);
    checkKeys(parsed);
    return merged(DevicePatch(), readDevicePatch(parsed));
}

} // namespace Agent
