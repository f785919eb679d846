#include <climits>

// The undefined-behaviour sanitizer reads its options with its first report, and needs a descriptor
// for that. A program that will have none to spare is made to report something at its start.
// Whoever preloads this suppresses the report (signed-integer-overflow:*).
__attribute__((constructor)) static void report() {
    volatile int most = INT_MAX;
    most = most + 1;
}
