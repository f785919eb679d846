#include "agent/tables/ShownTables.h"

#include <optional>
#include <utility>
#include <vector>

#include "agent/base/Errors.h"
#include "agent/document/JsonWriter.h"
#include "agent/output/Output.h"
#include "agent/tables/TableRows.h"
#include "agent/topics/StateLines.h"
#include "agent/topics/StatePrinter.h"
#include "agent/topics/VrfTable.h"

namespace Agent {

namespace {

template <typename Row>
void printRows(std::ostream& out, const std::vector<Row>& rows, const TablesForm& form) {
    RowTable<Row> table;
    std::string line;
    for (const Row& row : rows) {
        if (form.json) {
            line.clear();
            appendJsonLine(line, row);
            out << line;
        } else {
            table.append(row);
        }
    }
    table.print(out, "");
}

void printVrfs(std::ostream& out, const directnet::Tables& tables,
               const std::optional<directnet_vrf>& vrf, const TablesForm& form) {
    if (form.json) {
        std::string lines;
        StateLines sink(lines);
        printTables(sink, tables, vrf, false);
        out << lines;
    } else {
        VrfTable table(out);
        printTables(table, tables, vrf, false);
    }
}

} // namespace

void showTables(std::ostream& out, const directnet::Tables& tables, const std::string& topic,
                const std::string& vrf, const TablesForm& form) {
    std::optional<directnet_vrf> only;
    if (!vrf.empty()) {
        only = tables.vrf(vrf);
        if (!only) {
            throw FailureError("the tables have no VRF " + vrf);
        }
    }
    const std::uint32_t id = only ? only->id : DIRECTNET_ALL_VRFS;
    if (topic == "vias") {
        printRows(out, viaRows(tables, id), form);
    } else if (topic == "leaks") {
        printRows(out, leakRows(tables, id), form);
    } else if (topic == "vrfs") {
        printVrfs(out, tables, only, form);
    } else {
        const auto sink = form.json ? makeStateDocuments(out) : makeStateTables(out, form.colour);
        printTables(*sink, tables, only, true);
    }
    finishOutput(out);
}

} // namespace Agent
