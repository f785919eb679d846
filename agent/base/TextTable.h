#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace Agent {

/// A table for people: columns as wide as their widest cell, under a header. An optional column
/// with nothing under its header is left out.
class TextTable {
  public:
    using Row = std::vector<std::string>;

    /// `isOptional` has a flag for each column.
    TextTable(Row header, std::vector<bool> isOptional) : isOptional_(std::move(isOptional)) {
        rowIs(std::move(header));
    }

    /// As many cells as the header has; made printable.
    void rowIs(Row row);
    void print(std::ostream& out, const std::string& indent) const;

  private:
    bool isUsed(std::size_t column) const;

    std::vector<bool> isOptional_;
    std::vector<Row> rows_; // the header first
    std::vector<std::size_t> widths_;
};

} // namespace Agent
