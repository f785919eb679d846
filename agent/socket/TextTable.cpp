#include "agent/socket/TextTable.h"

#include <algorithm>
#include <utility>

#include "platform/ringlog/Printable.h"

namespace Agent {

void TextTable::rowIs(Row row) {
    widths_.resize(row.size());
    for (std::size_t column = 0; column < row.size(); ++column) {
        std::string cell;
        Ringlog::appendPrintable(cell, row[column]);
        widths_[column] = std::max(widths_[column], cell.size());
        row[column] = std::move(cell);
    }
    rows_.push_back(std::move(row));
}

void TextTable::print(std::ostream& out, const std::string& indent) const {
    for (const Row& row : rows_) {
        std::string line = indent;
        for (std::size_t column = 0; column < row.size(); ++column) {
            line += row[column];
            line.append(widths_[column] - row[column].size() + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

} // namespace Agent
