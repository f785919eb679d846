#include "platform/orb/object/PtrInterface.h"

#include "platform/orb/object/AllocTrackTypeInfo.h"
#include "platform/orb/object/Decision.h"
#include "platform/orb/object/TypeNode.h"

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
