#include "agent/topics/StatePrinter.h"

#include <algorithm>

namespace Agent {

void StatePrinter::time(const TimeRow& row) {
    vrf_.reset();
    routes_.clear();
    printTime(row);
}

void StatePrinter::vrf(const VrfRow& row) {
    finishVrf();
    vrf_ = row;
}

void StatePrinter::totals(const TotalsRow& row) {
    finishVrf();
    printTotals(row);
}

void StatePrinter::finishVrf() {
    if (vrf_) {
        std::ranges::sort(routes_, {}, &RouteRow::prefix);
        printVrf(*vrf_, routes_);
    }
    vrf_.reset();
    routes_.clear();
}

} // namespace Agent
