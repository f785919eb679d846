#include "bench/Measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Bench {

namespace {

double secondsOf(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

} // namespace

double cpuSeconds() { return secondsOf(CLOCK_PROCESS_CPUTIME_ID); }

double threadCpuSeconds() { return secondsOf(CLOCK_THREAD_CPUTIME_ID); }

double residentBytes() {
    long total = 0;
    long resident = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%ld %ld", &total, &resident) != 2) {
            resident = 0;
        }
        std::fclose(file);
    }
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

Result inChild(const std::function<Result()>& workload) {
    int ends[2];
    if (pipe(ends) != 0) {
        std::abort();
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const Result result = workload();
        const bool written = write(ends[1], &result, sizeof result) == sizeof result;
        _exit(written ? 0 : 1);
    }
    close(ends[1]);
    Result result;
    const bool complete = read(ends[0], &result, sizeof result) == sizeof result;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!complete || status != 0) {
        std::fprintf(stderr, "the measured process failed\n");
        std::exit(1);
    }
    return result;
}

Result medianOf(int runs, const std::function<Result()>& workload) {
    std::vector<Result> results;
    results.reserve(static_cast<std::size_t>(runs));
    for (int run = 0; run < runs; ++run) {
        results.push_back(inChild(workload));
    }
    const auto middle = results.begin() + runs / 2;
    std::nth_element(results.begin(), middle, results.end(), [](const Result& a, const Result& b) {
        return a.cpu * b.bareCpu < b.cpu * a.bareCpu;
    });
    return *middle;
}

} // namespace Bench
