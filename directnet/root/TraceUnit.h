#pragma once

namespace Routing::DirectNet {

/// What the sources of this folder are called in traces: one unit, see Trace.h.
inline constexpr const char* directNetTraceUnit = "DirectNet";

} // namespace Routing::DirectNet
