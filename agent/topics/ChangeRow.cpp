#include "agent/topics/ChangeRow.h"

#include "agent/base/Utf8.h"

namespace Agent {

namespace {

/// Appends a row's columns, each behind two spaces and its word.
class TextColumns {
  public:
    explicit TextColumns(std::string& out) : out_(out) {}

    template <typename T>
    void operator()(const Column& column, const T& value) {
        if (!isAbsent(value)) {
            out_ += "  ";
            out_ += column.word;
            out_ += printable(ValueForm<T>::text(value));
        }
    }

  private:
    std::string& out_;
};

} // namespace

void appendChangeText(std::string& out, const ChangeRow& row, Colour colour) {
    out += changeSign(row.change, colour);
    out += ' ';
    out += printable(row.vrf);
    out += ' ';
    row.route.prefix.appendTo(out);
    if (row.change != ChangeKind::goes) {
        RouteRow::describeTarget(row.route, TextColumns(out));
    }
    out += '\n';
}

} // namespace Agent
