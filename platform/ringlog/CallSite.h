#pragma once

namespace Ringlog {

/// Where a trace statement stands. The texts are literals and live as long as the process.
struct CallSite {
    const char* unit;      ///< the source unit's name, for example "IntfBacklogSm"
    int line;              ///< the line within the unit
    const char* signature; ///< the function as the compiler spells it; cut only when printed
};

} // namespace Ringlog
