#include "agent/topics/MetricsText.h"

namespace Agent {

namespace {

struct TypeForm {
    std::string_view name;
    std::string_view suffix; // of its samples
};

TypeForm formOf(MetricsText::Type type) {
    switch (type) {
    case MetricsText::Type::counter:
        return {"counter", "_total"};
    case MetricsText::Type::info:
        return {"info", "_info"};
    case MetricsText::Type::gauge:
        break;
    }
    return {"gauge", ""};
}

void appendEscaped(std::string& out, std::string_view text) {
    for (const char c : text) {
        if (c == '\n') {
            out += "\\n";
            continue;
        }
        if (c == '\\' || c == '"') {
            out += '\\';
        }
        out += c;
    }
}

} // namespace

void MetricsText::family(std::string_view name, Type type, std::string_view help,
                         std::string_view unit) {
    name_ = name;
    type_ = type;
    describe("TYPE", formOf(type).name);
    if (!unit.empty()) {
        describe("UNIT", unit);
    }
    describe("HELP", help);
}

void MetricsText::describe(std::string_view keyword, std::string_view text) {
    out_.append("# ").append(keyword).append(" ").append(name_).append(" ");
    appendEscaped(out_, text);
    out_ += '\n';
}

void MetricsText::sample(const Labels& labels, std::string_view value) {
    out_.append(name_).append(formOf(type_).suffix);
    char before = '{';
    for (const auto& [label, text] : labels) {
        out_ += before;
        out_.append(label).append("=\"");
        appendEscaped(out_, text);
        out_ += '"';
        before = ',';
    }
    out_.append(labels.size() > 0 ? "} " : " ").append(value).append("\n");
}

} // namespace Agent
