#include "agent/base/TextTable.h"

#include <algorithm>
#include <utility>

#include "agent/base/Utf8.h"

namespace Agent {

void TextTable::rowIs(Row row) {
    widths_.resize(std::max(widths_.size(), row.size()));
    for (std::size_t column = 0; column < row.size(); ++column) {
        row[column] = printable(row[column]);
        widths_[column] = std::max(widths_[column], columnsOf(row[column]));
    }
    rows_.push_back(std::move(row));
}

void TextTable::print(std::ostream& out, const std::string& indent) const {
    std::vector<std::size_t> columns;
    for (std::size_t column = 0; column < widths_.size(); ++column) {
        if (isUsed(column)) {
            columns.push_back(column);
        }
    }
    for (const Row& row : rows_) {
        std::string line = indent;
        for (const std::size_t column : columns) {
            line += row[column];
            line.append(widths_[column] - columnsOf(row[column]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

bool TextTable::isUsed(std::size_t column) const {
    return !isOptional_[column] || std::any_of(rows_.begin() + 1, rows_.end(), [&](const Row& row) {
        return !row[column].empty();
    });
}

} // namespace Agent
