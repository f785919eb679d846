#include "agent/tables/RoutePrinter.h"

#include <utility>

#include "agent/document/JsonWriter.h"
#include "agent/output/Output.h"

namespace Agent {

RoutePrinter::RoutePrinter(std::ostream& out, directnet::Tables& tables, std::string vrf,
                           const TablesForm& form)
    : out_(out), vrf_(std::move(vrf)), form_(form),
      routes_(tables, [this](const ChangeRow& row) { print(row); }) {}

void RoutePrinter::update() {
    const auto finish = [this] {
        if (!std::exchange(complete_, true) && form_.json) {
            line_.clear();
            appendJsonLine(line_, "change", "complete");
            out_ << line_;
        }
        finishOutput(out_);
    };
    try {
        routes_.update();
    } catch (const directnet::TablesError&) {
        finish();
        throw;
    }
    finish();
}

void RoutePrinter::print(const ChangeRow& row) {
    if (!vrf_.empty() && row.vrf != vrf_) {
        return;
    }
    line_.clear();
    if (form_.json) {
        appendJsonLine(line_, row);
    } else {
        appendChangeText(line_, row, form_.colour);
    }
    out_ << line_;
}

} // namespace Agent
