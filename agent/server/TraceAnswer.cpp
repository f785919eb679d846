#include "agent/server/TraceAnswer.h"

#include "platform/ringlog/TraceHandle.h"

namespace Agent {

bool TraceAnswer::appendNext(std::string& out) {
    if (done_) {
        return false;
    }
    int level = 9;
    while (level >= 0 && !Ringlog::TraceHandle::anyEnabled(level)) {
        --level;
    }
    out += "{\"trace\":" + std::to_string(level) + "}\n";
    done_ = true;
    return true;
}

} // namespace Agent
