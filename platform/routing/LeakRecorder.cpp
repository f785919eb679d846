#include "platform/routing/LeakRecorder.h"

#include <utility>
#include <vector>

#include "platform/orb/container/Keys.h"

namespace Routing {

void LeakRecorder::StatusReactor::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == DirectNetLeakStatus::leakedRouteBySourceVrfAttribute) {
        owner()->handleSource(Orb::keyAs<VrfId>(key));
    }
}

void LeakRecorder::SourceReactor::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == RouteLeakedFromVrf::destVrfIdAttribute) {
        const auto& leaked = Orb::keyAs<LeakedPrefix>(key);
        owner()->handleLeak({notifier()->sourceVrfId(), leaked.genPrefix(), leaked.destVrfId()},
                            notifier()->leaks(leaked.genPrefix(), leaked.destVrfId()));
    }
}

LeakRecorder::LeakRecorder(Orb::Ptr<Vaultdb::Folder> folder, const Orb::String& path,
                           Orb::Ptr<DirectNetLeakStatus> status)
    : folder_(std::move(folder)), path_(path) {
    table_.share(folder_, path_);
    table_.onSpace([this] { handleSpace(); });
    table_.forEach([&status](const LeakedRoute& leak) { status->leakIs(leak); });
    for (const auto& leaks : status->leakedRouteBySourceVrf()) {
        sources_.try_emplace(leaks->sourceVrfId(), this)
            .first->second.notifierIs(Orb::Ptr<const RouteLeakedFromVrf>(leaks));
    }
    status_.notifierIs(std::move(status));
}

LeakRecorder::~LeakRecorder() = default;

void LeakRecorder::handleSource(VrfId source) {
    sources_.erase(source);
    table_.clear(source, false);
    if (const RouteLeakedFromVrf* leaks = status_.notifier()->leakedRouteBySourceVrf(source)) {
        sources_.try_emplace(source, this)
            .first->second.notifierIs(Orb::Ptr<const RouteLeakedFromVrf>(leaks));
        writeAll(*leaks);
    }
}

void LeakRecorder::writeAll(const RouteLeakedFromVrf& leaks) {
    for (const auto& entry : leaks.destVrfId()) {
        for (const auto& destination : entry.value()) {
            handleLeak({leaks.sourceVrfId(), entry.key(), destination.key()}, true);
        }
    }
}

void LeakRecorder::handleLeak(const LeakedRoute& leak, bool present) {
    if (!present) {
        table_.erase(leak);
    } else if (table_.hasRoomFor(leak)) {
        table_.insertOrAssign(leak);
    } else {
        isIncomplete_ = true;
        if (!std::exchange(isReported_, true)) {
            folder_->report("table " + path_ + ": no space for all leaks");
        }
    }
}

void LeakRecorder::handleSpace() {
    if (std::exchange(isIncomplete_, false)) {
        for (const auto& leaks : status_.notifier()->leakedRouteBySourceVrf()) {
            writeAll(*leaks);
        }
        isReported_ = isIncomplete_;
    }
}

} // namespace Routing
