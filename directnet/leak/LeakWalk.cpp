#include "directnet/leak/LeakWalk.h"

namespace Routing::DirectNet {

namespace {

using Sources = Orb::Children<RouteLeakedFromVrf>::Map;

/// The first leaked prefix of the source VRF at `source` or of one behind it.
template <typename Source>
SourceVrfPrefix firstFrom(const Sources& sources, const Source* source) {
    while (source != nullptr && (*source)->destVrfId().empty()) {
        source = sources.after((*source)->sourceVrfId());
    }
    return source == nullptr
               ? SourceVrfPrefix()
               : SourceVrfPrefix((*source)->sourceVrfId(), (*source)->destVrfId().first()->key());
}

} // namespace

SourceVrfPrefix leakAtOrAfter(const DirectNetLeakLocalStatus& status,
                              const SourceVrfPrefix& position) {
    const auto& sources = status.leakedRouteBySourceVrf();
    if (isNowhere(position)) {
        return firstFrom(sources, sources.first());
    }
    if (const auto* leaks = status.leakedRouteBySourceVrf(position.sourceVrfId())) {
        if (const auto* entry = leaks->destVrfId().atOrAfter(position.genPrefix())) {
            return {position.sourceVrfId(), entry->key()};
        }
    }
    return firstFrom(sources, sources.after(position.sourceVrfId()));
}

SourceVrfPrefix leakAfter(const DirectNetLeakLocalStatus& status, const SourceVrfPrefix& position) {
    const auto& sources = status.leakedRouteBySourceVrf();
    if (const auto* leaks = status.leakedRouteBySourceVrf(position.sourceVrfId())) {
        if (const auto* entry = leaks->destVrfId().after(position.genPrefix())) {
            return {position.sourceVrfId(), entry->key()};
        }
    }
    return firstFrom(sources, sources.after(position.sourceVrfId()));
}

} // namespace Routing::DirectNet
