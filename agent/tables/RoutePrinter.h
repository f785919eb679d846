#pragma once

#include <ostream>
#include <string>

#include <directnet/tables.hpp>

#include "agent/tables/RouteFollower.h"
#include "agent/tables/ShownTables.h"

namespace Agent {

/// Prints the routes there are, then each that comes, changes or goes, of one VRF, or of all if
/// none is named. The tables must outlive it.
class RoutePrinter {
  public:
    RoutePrinter(std::ostream& out, directnet::Tables& tables, std::string vrf,
                 const TablesForm& form);
    RoutePrinter(const RoutePrinter&) = delete;
    RoutePrinter& operator=(const RoutePrinter&) = delete;
    ~RoutePrinter() = default;

    /// Brings the tables to the present. Throws directnet::TablesError for a table that cannot be
    /// read, when the others have been printed, and FailureError when the output takes no more.
    void update();

  private:
    void print(const ChangeRow& row);

    std::ostream& out_;
    std::string vrf_;
    TablesForm form_;
    bool complete_ = false; // whether what there is at first has been printed
    std::string line_;
    RouteFollower routes_;
};

} // namespace Agent
