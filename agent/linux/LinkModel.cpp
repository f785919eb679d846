#include "agent/linux/LinkModel.h"

namespace Agent::Linux {

void LinkModel::append(const AddressMessage& message) {
    if (message.local.family == AF_INET) {
        ipv4.append(message);
    } else {
        ipv6.add(message);
    }
}

} // namespace Agent::Linux
