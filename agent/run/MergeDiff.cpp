#include "agent/run/MergeDiff.h"

#include <utility>

namespace Agent {

using json = nlohmann::json;

json mergeDiff(const json& from, const json& to) {
    json patch = json::object();
    for (const auto& item : from.items()) {
        if (!to.contains(item.key())) {
            patch[item.key()] = nullptr;
        }
    }
    for (const auto& item : to.items()) {
        const auto before = from.find(item.key());
        if (before == from.end() || !before->is_object() || !item.value().is_object()) {
            if (before == from.end() || *before != item.value()) {
                patch[item.key()] = item.value();
            }
            continue;
        }
        json inner = mergeDiff(*before, item.value());
        if (!inner.empty()) {
            patch[item.key()] = std::move(inner);
        }
    }
    return patch;
}

} // namespace Agent
