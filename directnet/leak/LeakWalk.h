#pragma once

#include "platform/routing/DirectNetLeakLocalStatus.h"
#include "platform/routing/SourceVrfPrefix.h"

/// The order in which a review visits what is leaked: one (source VRF, prefix) after the other, by
/// hash. Positions are keys, so a walk goes on at its place whatever has come or gone meanwhile.
namespace Routing::DirectNet {

/// Whether it is no position but the empty one: at the beginning of a walk and behind its end.
inline bool isNowhere(const SourceVrfPrefix& position) {
    return position.sourceVrfId() == Vrf::VrfIdMap::VrfId::invalid();
}

/// The leaked prefix at the position or, if it is leaked no more, the next one behind; from
/// nowhere, the first.
SourceVrfPrefix leakAtOrAfter(const DirectNetLeakLocalStatus& status,
                              const SourceVrfPrefix& position);

/// The next leaked prefix behind the position.
SourceVrfPrefix leakAfter(const DirectNetLeakLocalStatus& status, const SourceVrfPrefix& position);

} // namespace Routing::DirectNet
