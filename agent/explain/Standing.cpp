#include "agent/explain/Standing.h"

#include <array>
#include <utility>

namespace Agent {

namespace {

using Routing::DirectNet::IntfBacklog;
using Routing::DirectNet::IntfIdAndAddr;
using Routing::DirectNet::IntfIdAndPrefix;
using Routing::DirectNet::IntfIdSet;

/// What people call the fields of a contributor.
constexpr std::array<std::pair<std::string_view, std::string_view>, 5> fieldWords{
    {{"intfId", "interface name"},
     {"addrWithMask", "address"},
     {"sourceVrfId", "source VRF id"},
     {"isVirtual", "own before virtual"},
     {"routeType", "route type"}}};
static_assert(fieldWords.size() == IntfIdAndAddr::valueFieldCount);

std::string_view wordsOf(std::string_view field) {
    for (const auto& [name, words] : fieldWords) {
        if (name == field) {
            return words;
        }
    }
    return field;
}

} // namespace

std::string_view precedence(const IntfIdAndAddr& left, const IntfIdAndAddr& right) {
    std::string_view words;
    IntfIdAndAddr::visitFields([&](std::string_view name, auto field) {
        if (words.empty() && left.*field != right.*field) {
            words = wordsOf(name);
        }
    });
    return words;
}

Standing standingOf(const IntfBacklog& backlog, const IntfIdSet& set,
                    const IntfIdAndAddr& contributor) {
    const auto& all = set.intfIdAndAddr();
    const IntfIdAndAddr& winner = all.first()->key();
    Standing standing;
    standing.wins = contributor == winner;
    const auto* other = standing.wins ? all.after(winner) : all.first();
    if (other != nullptr) {
        standing.by = std::string(precedence(contributor, other->key()));
    }
    standing.queued =
        backlog.backlog().contains(IntfIdAndPrefix(contributor.intfId(), set.genPrefix()));
    return standing;
}

} // namespace Agent
