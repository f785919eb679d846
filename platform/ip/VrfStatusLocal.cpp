#include "platform/ip/VrfStatusLocal.h"

#include "platform/orb/attribute/DefineType.h"

namespace Ip {

ORB_DEFINE_TYPE(VrfStatusLocal)

std::ostream& operator<<(std::ostream& out, VrfState state) {
    return out << static_cast<unsigned>(state);
}

} // namespace Ip
