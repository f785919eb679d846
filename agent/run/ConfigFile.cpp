#include "agent/run/ConfigFile.h"

#include <string_view>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/document/DevicePatch.h"
#include "agent/document/JsonText.h"
#include "agent/document/Place.h"
#include "agent/run/JsonLines.h"

namespace Agent {

namespace {

using json = nlohmann::json;

constexpr const char* learned = "is learned from the kernel and may not stand here";

void checkVrf(const json& vrf, const Place& place, bool isDefault) {
    if (!vrf.is_object()) {
        return; // refused by the schema
    }
    if (vrf.contains("status")) {
        Place(place, "status").refuse(learned);
    }
    const auto id = vrf.find("id");
    if (id != vrf.end() && id->is_number() && (*id == 0) != isDefault) {
        Place(place, "id")
            .refuse(isDefault ? "VRF default has id 0" : "0 is the id of VRF default");
    }
}

/// What of the device document such a file may hold.
void checkKeys(const json& document) {
    const Place root;
    if (!document.is_object()) {
        root.refuse("must be an object");
    }
    for (const char* key : {"kernel", "ipv4", "ipv6"}) {
        if (document.contains(key)) {
            Place(root, key).refuse(learned);
        }
    }
    if (document.contains("startReadyVerification")) {
        Place(root, "startReadyVerification").refuse("is the agent's own to decide");
    }
    const auto vrfs = document.find("vrfs");
    if (vrfs != document.end() && vrfs->is_object()) {
        const Place place(root, "vrfs");
        for (const auto& item : vrfs->items()) {
            checkVrf(item.value(), Place(place, item.key()),
                     item.key() == L3::VrfName::defaultVrf().value());
        }
    }
}

/// Spells the keys of every VRF's object in `section` as T spells them.
template <typename T>
void normalizeKeys(json& document, const char* part, const char* family) {
    const json::json_pointer at = json::json_pointer() / part / family;
    if (!document.contains(at)) {
        return;
    }
    for (json& vrf : document[at]) {
        json spelled = json::object();
        for (auto& item : vrf.items()) {
            std::string key;
            T::fromString(item.key()).appendTo(key);
            spelled[key] = std::move(item.value());
        }
        vrf = std::move(spelled);
    }
}

} // namespace

ConfigFile::ConfigFile(std::string name, std::string text)
    : name_(std::move(name)), text_(std::move(text)) {
    try {
        const json parsed = parseJson(text_);
        checkKeys(parsed);
        readDevicePatch(parsed);
        document_ = json::object();
        document_.merge_patch(parsed);
    } catch (const DocumentError& error) {
        throw BadInputError(message(error));
    }
    normalizeKeys<Lanx::IpAddrWithMask>(document_, "virtualIps", "ipv4");
    normalizeKeys<Lanx::Ip6Addr>(document_, "virtualIps", "ipv6");
    normalizeKeys<Lanx::IpPrefix>(document_, "leaks", "ipv4");
    normalizeKeys<Lanx::Ip6Prefix>(document_, "leaks", "ipv6");
}

std::string ConfigFile::message(const DocumentError& error) const {
    const std::string& pointer = error.pointer();
    return name_ + ':' + std::to_string(line(error)) + ": "
           + (pointer.empty() ? "" : pointer + ": ") + error.what();
}

std::size_t ConfigFile::line(const DocumentError& error) const {
    return error.byte() ? lineOf(text_, *error.byte())
                        : lineOf(text_, std::string_view(error.pointer()));
}

} // namespace Agent
