#include "agent/server/WatchAnswer.h"

#include "directnet/root/ContainerSm.h"

namespace Agent {

bool WatchAnswer::appendNext(std::string& out) {
    if (isComplete_) {
        return false;
    }
    if (const auto route = walk_.nextRoute()) {
        if (filter_.admits(route->key().prefix())) {
            appendJsonLine(
                out,
                ChangeRow{{}, ChangeKind::is, walk_.vrf()->vrfName().value(), lookup_.row(*route)});
        }
    } else if (!walk_.nextVrf()) {
        appendJsonLine(out, "change", "complete");
        isComplete_ = true;
    }
    return true;
}

} // namespace Agent
