#include "platform/orb/PtrInterface.h"

#include "platform/orb/AllocTrackTypeInfo.h"
#include "platform/orb/TypeNode.h"

namespace Orb {

void PtrInterface::handleZeroRef() {
    const TypeNode* type = fwkTypeNode();
    delete this;
    if (type != nullptr) {
        AllocTrackTypeInfo::trackDeallocation(*type);
    }
}

} // namespace Orb
