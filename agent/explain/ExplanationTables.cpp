#include "agent/explain/Explanation.h"

#include <optional>

#include "agent/base/TextTable.h"
#include "agent/base/Utf8.h"
#include "agent/explain/ExplanationLine.h"
#include "agent/explain/IntfRows.h"

namespace Agent {

namespace {

/// "wins by interface name, queued"; `than` names the winner for one that loses.
std::string standingText(const Standing& standing, const std::string& than) {
    std::string text = standing.wins ? "wins" : "loses" + (than.empty() ? than : " to " + than);
    if (standing.by) {
        text += " by " + *standing.by;
    }
    return standing.queued ? text + ", queued" : text;
}

template <typename T>
std::string textOf(const T& value) {
    return ValueForm<T>::text(value);
}

class TablesPrinter final : public ExplanationPrinter {
  public:
    TablesPrinter(std::ostream& out, Colour colour, std::string target)
        : ExplanationPrinter(std::move(target)), out_(out), colour_(colour) {}

  private:
    void print(ExplanationLine kind, const JsonValue& object, std::string_view) override {
        switch (kind) {
        case ExplanationLine::prefix:
            return printPrefix(readRow<PrefixRow>(object));
        case ExplanationLine::contributor:
            return addContributor(readRow<ContributorRow>(object));
        case ExplanationLine::candidate:
            return addCandidate(readRow<CandidateRow>(object));
        case ExplanationLine::interface:
            return printInterface(readRow<InterfaceRow>(object));
        case ExplanationLine::address:
            return addAddress(readRow<AddressRow>(object));
        case ExplanationLine::contribution:
            return addContribution(readRow<ContributionRow>(object));
        }
    }
    void finish() override {
        if (table_) {
            table_->print(out_, "  ");
            table_.reset();
        }
    }

    void begin(const std::string& title) {
        finish();
        out_ << (isFirst_ ? "" : "\n") << colour_.bold(title);
        isFirst_ = false;
    }
    TextTable& table(TextTable::Row header) {
        if (!table_) {
            std::vector<bool> isOptional(header.size());
            isOptional[3] = true; // the one that leaks have
            table_.emplace(std::move(header), std::move(isOptional));
        }
        return *table_;
    }

    void printPrefix(const PrefixRow& row);
    void addContributor(const ContributorRow& row);
    void addCandidate(const CandidateRow& row);
    void printInterface(const InterfaceRow& row);
    void addAddress(const AddressRow& row);
    void addContribution(const ContributionRow& row);
    void addToInterface(TextTable::Row row);

    std::ostream& out_;
    Colour colour_;
    bool isFirst_ = true;
    std::optional<TextTable> table_;
    std::string address_;
    std::string role_;
};

void TablesPrinter::printPrefix(const PrefixRow& row) {
    begin(row.vrf.name.empty() ? textOf(row.prefix)
                               : "VRF " + printable(row.vrf.name) + ' ' + textOf(row.prefix));
    if (const auto& route = row.route.row) {
        out_ << "  " << textOf(route->type) << "  " << printable(textOf(route->intf)) << "  "
             << textOf(route->via);
        if (route->sourceVrf) {
            out_ << "  from " << printable(textOf(*route->sourceVrf));
        }
        if (route->kernel) {
            out_ << "  kernel " << printable(*route->kernel);
        }
        out_ << '\n';
    } else {
        out_ << "  no route\n";
    }
    if (row.queued) {
        out_ << "  queued\n";
    }
    if (row.why) {
        out_ << "  " << printable(*row.why) << '\n';
    }
    if (row.longer) {
        out_ << "  not written yet: " << textOf(*row.longer) << '\n';
    }
}

void TablesPrinter::addContributor(const ContributorRow& row) {
    table({"INTERFACE", "ADDRESS", "KIND", "SOURCE VRF", "TYPE", "VIA", "WHY"})
        .rowIs({textOf(row.intf), textOf(row.address), row.kind,
                row.sourceVrf ? textOf(*row.sourceVrf) : std::string(), textOf(row.type),
                textOf(row.via), standingText(row.standing, {})});
}

void TablesPrinter::addCandidate(const CandidateRow& row) {
    table({"INTERFACE", "ADDRESS", "ROLE", "VRF", "WHY NOT"})
        .rowIs({textOf(row.intf), textOf(row.address), row.role, row.vrf, row.whyNot});
}

void TablesPrinter::printInterface(const InterfaceRow& row) {
    begin(printable(textOf(row.intf)));
    out_ << "  VRF " << printable(row.vrf) << ", network namespace " << printable(textOf(row.netns))
         << ", device " << row.device << '\n';
}

void TablesPrinter::addAddress(const AddressRow& row) {
    address_ = textOf(row.address);
    role_ = row.role;
    if (row.why) {
        addToInterface({address_, role_, "-", {}, "-", "-", *row.why});
    }
}

void TablesPrinter::addContribution(const ContributionRow& row) {
    std::string winner;
    if (row.winnerIntf && row.winnerAddress) {
        winner = textOf(*row.winnerIntf) + ' ' + textOf(*row.winnerAddress);
    }
    addToInterface({address_, role_, textOf(row.prefix), row.vrf.value_or(std::string()),
                    textOf(row.type), textOf(row.via), standingText(row.standing, winner)});
}

void TablesPrinter::addToInterface(TextTable::Row row) {
    table({"ADDRESS", "ROLE", "PREFIX", "LEAKED TO", "TYPE", "VIA", "WHY"}).rowIs(std::move(row));
}

} // namespace

std::unique_ptr<AnswerPrinter> printExplanation(std::ostream& out, Colour colour,
                                                std::string target) {
    return std::make_unique<TablesPrinter>(out, colour, std::move(target));
}

} // namespace Agent
