#pragma once

#include <ostream>

#include "directnet/model/FunctionName.h"
#include "platform/ringlog/RingMessage.h"
#include "platform/ringlog/Ringlog.h"
#include "platform/ringlog/RinglogConverter.h"
#include "platform/ringlog/TraceHelper.h"

/// The library's trace statements. A source unit names itself once, in its unnamed namespace:
///
///   DIRECTNET_TRACE_UNIT("IntfBacklogSm");
///
/// and then traces with
///
///   DIRECTNET_TRACE(8, "backlogSize=", size);            text trace, operands written with <<
///   DIRECTNET_TRACE_TO(handle, 8, "ready");              the same, to another handle
///   DIRECTNET_RINGLOG("backlog size=", size);            ring trace (RingMessage.h)
///   DIRECTNET_DUALLOG(8, "create receive route");        both, operands written with <<
///   DIRECTNET_DUALLOG_TO(handle, 8, "ready");            the same, to another handle
///   DIRECTNET_TRACE_IN("A::f", 8, "text");               in the name of another function, for what
///   DIRECTNET_RINGLOG_IN("A::f", "text");                is one template of several functions
///   DIRECTNET_DUALLOG_IN("A::f", 8, "text");
///   DIRECTNET_THIS_FUNCTION                              such a name, in a member of a template
///                                                        whose instances have names of their own
///
/// Operands are evaluated only when the message goes somewhere, so they must not be needed
/// otherwise. Statements stand in functions; in a lambda they name the enclosing function.
#define DIRECTNET_TRACE_UNIT(name) [[maybe_unused]] constexpr const char* directNetTraceUnit = name

#define DIRECTNET_TRACE(level, ...)                                                                \
    DIRECTNET_TRACE_TO(Routing::DirectNet::traceHandle(), level, __VA_ARGS__)

#define DIRECTNET_TRACE_TO(handle, level, ...)                                                     \
    DIRECTNET_TRACE_SITE(handle, __PRETTY_FUNCTION__, level, __VA_ARGS__)

#define DIRECTNET_TRACE_IN(function, level, ...)                                                   \
    DIRECTNET_TRACE_SITE(Routing::DirectNet::traceHandle(), function, level, __VA_ARGS__)

#define DIRECTNET_TRACE_SITE(handle, function, level, ...)                                         \
    do {                                                                                           \
        if (Ringlog::TraceHandle::anyEnabled(level)) {                                             \
            if (const auto directNetTrace =                                                        \
                    Ringlog::TraceHelper::createIfEnabled((handle), (level))) {                    \
                Routing::DirectNet::traceText(                                                     \
                    *directNetTrace, Ringlog::CallSite{directNetTraceUnit, __LINE__, function},    \
                    __VA_ARGS__);                                                                  \
            }                                                                                      \
        }                                                                                          \
    } while (false)

#define DIRECTNET_RINGLOG(...) DIRECTNET_RINGLOG_IN(__PRETTY_FUNCTION__, __VA_ARGS__)

#define DIRECTNET_RINGLOG_IN(function, ...)                                                        \
    do {                                                                                           \
        if (Ringlog::RingFile* const directNetRing = Ringlog::defaultRinglogFile()) {              \
            static constinit Ringlog::MessageDescriptor directNetMessage(directNetTraceUnit,       \
                                                                         __LINE__, function);      \
            Ringlog::writeMessage(*directNetRing, directNetMessage, __VA_ARGS__);                  \
        }                                                                                          \
    } while (false)

#define DIRECTNET_DUALLOG(level, ...)                                                              \
    DIRECTNET_DUALLOG_TO(Routing::DirectNet::traceHandle(), level, __VA_ARGS__)

#define DIRECTNET_DUALLOG_TO(handle, level, ...)                                                   \
    DIRECTNET_DUALLOG_SITE(handle, __PRETTY_FUNCTION__, level, __VA_ARGS__)

#define DIRECTNET_DUALLOG_IN(function, level, ...)                                                 \
    DIRECTNET_DUALLOG_SITE(Routing::DirectNet::traceHandle(), function, level, __VA_ARGS__)

#define DIRECTNET_DUALLOG_SITE(handle, function, level, ...)                                       \
    do {                                                                                           \
        static constinit Ringlog::MessageDescriptor directNetMessage(directNetTraceUnit, __LINE__, \
                                                                     function);                    \
        if (Ringlog::defaultRinglogFile() != nullptr                                               \
            || (Ringlog::TraceHandle::anyEnabled(level) && (handle).enabled(level))) {             \
            Duallog::RinglogConverter((handle), (level), directNetMessage).write(__VA_ARGS__);     \
        }                                                                                          \
    } while (false)

namespace Routing::DirectNet {

/// The handle of all text messages that name no other.
inline Ringlog::TraceHandle& traceHandle() {
    static Ringlog::TraceHandle& handle = Ringlog::TraceHandle::named("DirectNet");
    return handle;
}

/// The handle of the readiness messages.
inline Ringlog::TraceHandle& ribReadySmTraceHandle() {
    static Ringlog::TraceHandle& handle = Ringlog::TraceHandle::named("DirectNetRibReadySm");
    return handle;
}

// What the statements expand to. Kept out of line: callers are mostly not tracing.

template <typename... Ts>
[[gnu::noinline]] void traceText(const Ringlog::TraceHelper& helper, const Ringlog::CallSite& site,
                                 const Ts&... operands) {
    Ringlog::TraceMessage message = helper.trace(site.unit, site.line, site.signature);
    (message.stream() << ... << operands);
}

} // namespace Routing::DirectNet
