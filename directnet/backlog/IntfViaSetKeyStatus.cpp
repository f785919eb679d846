#include "directnet/backlog/IntfViaSetKeyStatus.h"

#include "directnet/model/Units.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/value/Assert.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IntfViaSetKeyStatus)
ORB_REGISTER(IntfViaSetKeyStatus, IntfViaSetKeyStatus, unitIntfBacklog, 7)

void IntfViaSetKeyStatus::incIntfVskRefcount(Lanx::IntfId intfId) {
    vskRefcountByIntfIdChange(intfId, [](std::uint32_t& count) { ++count; });
}

bool IntfViaSetKeyStatus::decIntfVskRefcount(Lanx::IntfId intfId) {
    const std::uint32_t count = vskRefcountByIntfId(intfId);
    ORB_ASSERT(count > 0, "vskRefcountByIntfId( intfId ) > 0");
    if (count == 1) {
        vskRefcountByIntfIdDel(intfId);
    } else {
        vskRefcountByIntfIdChange(intfId, [](std::uint32_t& references) { --references; });
    }
    return count == 1;
}

void IntfViaSetKeyStatus::incOwnAddresses(Lanx::IntfId intfId) {
    ownAddressesByIntfIdChange(intfId, [](std::uint32_t& count) { ++count; });
}

void IntfViaSetKeyStatus::decOwnAddresses(Lanx::IntfId intfId) {
    const std::uint32_t count = ownAddressesByIntfId(intfId);
    ORB_ASSERT(count > 0, "ownAddressesByIntfId( intfId ) > 0");
    if (count == 1) {
        ownAddressesByIntfIdDel(intfId);
    } else {
        ownAddressesByIntfIdChange(intfId, [](std::uint32_t& addresses) { --addresses; });
    }
}

} // namespace Routing::DirectNet
