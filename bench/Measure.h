#pragma once

#include <cstddef>
#include <functional>

namespace Bench {

/// CPU seconds that the process has used.
double cpuSeconds();

/// CPU seconds that this thread has used.
double threadCpuSeconds();

/// Bytes of memory that the process has resident.
double residentBytes();

/// What one run of a workload came to.
struct Result {
    double cpu = 0;         ///< seconds, the whole road
    double bareCpu = 0;     ///< seconds, the same routes straight into an empty table
    double longestCall = 0; ///< seconds
    double bytes = 0;       ///< growth of resident memory
    std::size_t routes = 0;
};

/// Runs the workload in a child process, so that every measurement begins with a fresh heap. Ends
/// the program if the child fails.
Result inChild(const std::function<Result()>& workload);

/// The run of the median x_bare out of so many.
Result medianOf(int runs, const std::function<Result()>& workload);

} // namespace Bench
