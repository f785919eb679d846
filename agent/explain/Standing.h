#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "agent/topics/Row.h"
#include "directnet/backlog/IntfBacklog.h"

namespace Agent {

/// How a contributor stands among those of its prefix.
struct Standing {
    bool wins = false;
    /// What decides between the winner and the best of the others, or this one of them; nothing for
    /// a contributor that is alone.
    std::optional<std::string> by;
    bool queued = false; // the prefix is to be looked at again because of its interface

    static void describe(auto& row, auto&& column) {
        column({"wins", "WINS"}, row.wins);
        column({"by", "BY"}, row.by);
        column({"queued", "QUEUED"}, row.queued);
    }
};

/// Of a contributor of that set, in that VRF.
Standing standingOf(const Routing::DirectNet::IntfBacklog& backlog,
                    const Routing::DirectNet::IntfIdSet& set,
                    const Routing::DirectNet::IntfIdAndAddr& contributor);

/// By what the one stands before the other, in words: the first field in the order of comparison
/// that tells them apart. Empty for equal ones.
std::string_view precedence(const Routing::DirectNet::IntfIdAndAddr& left,
                            const Routing::DirectNet::IntfIdAndAddr& right);

} // namespace Agent
