#include "platform/ringlog/TraceHandle.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/ringlog/FunctionName.h"
#include "platform/ringlog/Printable.h"

namespace Ringlog {

struct TraceHandle::Registry {
    std::mutex mutex; // guards the list and the level of new handles
    std::vector<std::unique_ptr<TraceHandle>> handles;
    int levelOfNew = off;
    Sink sink;

    void refreshHighest() {
        int highest = levelOfNew;
        for (const auto& handle : handles) {
            highest = std::max(highest, handle->level());
        }
        highest_.store(highest, std::memory_order_relaxed);
    }
};

TraceHandle::Registry& TraceHandle::registry() {
    // Never destroyed: destructors of other static objects may still trace.
    static auto& registry = *new Registry;
    return registry;
}

TraceHandle& TraceHandle::named(std::string_view name) {
    Registry& all = registry();
    std::lock_guard lock(all.mutex);
    auto found = std::find_if(all.handles.begin(), all.handles.end(),
                              [&](const auto& handle) { return handle->name() == name; });
    if (found != all.handles.end()) {
        return **found;
    }
    all.handles.emplace_back(new TraceHandle(name, all.levelOfNew));
    all.refreshHighest();
    return *all.handles.back();
}

void TraceHandle::levelOfAllIs(int level) {
    Registry& all = registry();
    std::lock_guard lock(all.mutex);
    all.levelOfNew = level;
    for (const auto& handle : all.handles) {
        handle->level_.store(level, std::memory_order_relaxed);
    }
    all.refreshHighest();
}

void TraceHandle::levelIs(int level) {
    Registry& all = registry();
    std::lock_guard lock(all.mutex);
    level_.store(level, std::memory_order_relaxed);
    all.refreshHighest();
}

void TraceHandle::sinkIs(Sink sink) { registry().sink = std::move(sink); }

void TraceHandle::print(int level, const CallSite& site, std::string_view text) const noexcept {
    try {
        std::string line = name_ + ' ' + std::to_string(level) + ' ' + site.unit + ':'
                           + std::to_string(site.line) + " [" + functionName(site.signature) + "] ";
        appendPrintable(line, text);
        if (const Sink& sink = registry().sink) {
            sink(line);
            return;
        }
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), stderr);
    } catch (...) { // NOLINT(bugprone-empty-catch): losing a line is better than failing the caller
    }
}

} // namespace Ringlog
