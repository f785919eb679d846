#include "platform/ip/VrfStatusLocal.h"

namespace Ip {

std::ostream& operator<<(std::ostream& out, VrfState state) {
    return out << static_cast<unsigned>(state);
}

} // namespace Ip
