#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "agent/base/TextTable.h"
#include "agent/topics/ValueForm.h"

namespace Agent {

// What can be shown is made of rows. A row is a struct that describes itself once, for all who
// write, print or read it:
//
//     struct LeakRow {
//         std::string vrf;
//         Lanx::IpGenPrefix prefix;
//         std::string to;
//
//         static void describe(auto& row, auto&& column) {
//             column({"vrf", "VRF"}, row.vrf);
//             column({"prefix", "PREFIX"}, row.prefix);
//             column({"to", "TO"}, row.to);
//         }
//     };
//
// How a value looks is its type's ValueForm. column.group(KEY, [](auto&& inner) {...}) holds
// columns that are an object of their own in JSON.

struct Column {
    std::string_view key;     // in JSON; needs no escaping
    std::string_view heading; // in a table
    std::string_view word{};  // before the value in a line of text
};

/// Writes a row's columns as members of the object that the writer is in.
class JsonColumns {
  public:
    explicit JsonColumns(JsonWriter& out) : out_(out) {}

    template <typename T>
    void operator()(const Column& column, const T& value) {
        if (!isAbsent(value)) {
            out_.plainKey(column.key);
            ValueForm<T>::write(out_, value);
        }
    }
    template <typename Describe>
    void group(std::string_view key, const Describe& describe) {
        out_.plainKey(key);
        out_.beginObject();
        describe(*this);
        out_.endObject();
    }

  private:
    JsonWriter& out_;
};

/// Appends a row as a JSON object on a line.
template <typename Row>
void appendJsonLine(std::string& out, const Row& row) {
    JsonWriter writer(out);
    writer.beginObject();
    Row::describe(row, JsonColumns(writer));
    writer.endObject();
    out += '\n';
}

/// Reads a row's columns from the members of a JSON object.
class ReadColumns {
  public:
    explicit ReadColumns(JsonValue object) : object_(object) {}

    template <typename T>
    void operator()(const Column& column, T& value) {
        const JsonValue json = object_.member(column.key);
        // An absent member leaves the default; one that has to be there is missed when it is read.
        if (json.exists() || !isAbsent(T())) {
            value = ValueForm<T>::read(json);
        }
    }
    template <typename Describe>
    void group(std::string_view key, const Describe& describe) {
        describe(ReadColumns(object_.member(key)));
    }

  private:
    JsonValue object_;
};

/// Throws FailureError when the object lacks a member or has one of another type.
template <typename Row>
Row readRow(JsonValue object) {
    Row row;
    Row::describe(row, ReadColumns(object));
    return row;
}

/// Collects the headings of a row's columns, and which of these may be absent.
class HeadingColumns {
  public:
    template <typename T>
    void operator()(const Column& column, const T&) {
        headings.emplace_back(column.heading);
        isOptional.push_back(isAbsent(T()));
    }
    template <typename Describe>
    void group(std::string_view, const Describe& describe) {
        describe(*this);
    }

    TextTable::Row headings;
    std::vector<bool> isOptional;
};

/// Collects the texts of a row's columns.
class CellColumns {
  public:
    template <typename T>
    void operator()(const Column&, const T& value) {
        cells.push_back(ValueForm<T>::text(value));
    }
    template <typename Describe>
    void group(std::string_view, const Describe& describe) {
        describe(*this);
    }

    TextTable::Row cells;
};

/// A table of rows, with the headings of the first. Prints nothing without rows.
template <typename Row>
class RowTable {
  public:
    void append(const Row& row) {
        if (!table_) {
            HeadingColumns columns;
            Row::describe(row, columns);
            table_.emplace(std::move(columns.headings), std::move(columns.isOptional));
        }
        CellColumns columns;
        Row::describe(row, columns);
        table_->rowIs(std::move(columns.cells));
    }
    void print(std::ostream& out, const std::string& indent) const {
        if (table_) {
            table_->print(out, indent);
        }
    }

  private:
    std::optional<TextTable> table_;
};

} // namespace Agent
