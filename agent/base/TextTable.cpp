#include "agent/base/TextTable.h"

#include <algorithm>
#include <utility>

#include "platform/ringlog/Printable.h"

namespace Agent {

std::string printable(std::string_view text) {
    std::string result;
    Ringlog::appendPrintable(result, text);
    return result;
}

void TextTable::rowIs(Row row) {
    widths_.resize(std::max(widths_.size(), row.size()));
    for (std::size_t column = 0; column < row.size(); ++column) {
        row[column] = printable(row[column]);
        widths_[column] = std::max(widths_[column], row[column].size());
    }
    rows_.push_back(std::move(row));
}

void TextTable::print(std::ostream& out, const std::string& indent) const {
    const std::size_t columns = usedColumns();
    for (const Row& row : rows_) {
        std::string line = indent;
        for (std::size_t column = 0; column < columns; ++column) {
            line += row[column];
            line.append(widths_[column] - row[column].size() + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

std::size_t TextTable::usedColumns() const {
    const std::size_t last = widths_.size() - 1;
    const bool isUsed = std::any_of(rows_.begin() + 1, rows_.end(),
                                    [&](const Row& row) { return !row[last].empty(); });
    return isUsed ? last + 1 : last;
}

} // namespace Agent
