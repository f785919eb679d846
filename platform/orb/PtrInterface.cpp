#include "platform/orb/PtrInterface.h"

#include "platform/orb/AllocTrackTypeInfo.h"
#include "platform/orb/Decision.h"
#include "platform/orb/TypeNode.h"

namespace Orb {

// Whoever is told of what a destructor writes may throw, which no destructor can pass on.
void PtrInterface::handleZeroRef() {
    const TypeNode* type = fwkTypeNode();
    try {
        decide([this] { delete this; });
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
    if (type != nullptr) {
        AllocTrackTypeInfo::trackDeallocation(*type);
    }
}

} // namespace Orb
