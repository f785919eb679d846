#include "agent/explain/Explanation.h"

#include <string_view>
#include <vector>

#include "agent/explain/ExplanationLine.h"

namespace Agent {

namespace {

/// Nests the lines of an answer: a prefix with its contributors, an interface with its addresses,
/// each of these with what it contributes.
class ObjectsPrinter final : public ExplanationPrinter {
  public:
    ObjectsPrinter(std::ostream& out, std::string target)
        : ExplanationPrinter(std::move(target)), out_(out) {}

  private:
    void print(ExplanationLine kind, const JsonValue&, std::string_view text) override {
        const std::size_t depth = depthOf(kind);
        while (open_.size() > depth) {
            close();
        }
        if (depth > 0 && open_.back() != listWith(kind)) {
            out_ << "],";
            open_.pop_back();
            open(listWith(kind));
        }
        out_ << (hasMembers_ ? "," : "") << text.substr(0, text.size() - 1);
        hasMembers_ = true;
        if (const std::string_view list = listOf(kind); !list.empty()) {
            out_ << ',';
            open(list);
        } else {
            out_ << '}';
        }
    }
    void finish() override {
        while (!open_.empty()) {
            close();
        }
    }

    void open(std::string_view list) {
        out_ << '"' << list << "\":[";
        open_.push_back(list);
        hasMembers_ = false;
    }
    /// Ends the list that is open, and what it lies in.
    void close() {
        open_.pop_back();
        out_ << "]}" << (open_.empty() ? "\n" : "");
        hasMembers_ = !open_.empty();
    }

    std::ostream& out_;
    std::vector<std::string_view> open_; // the lists
    bool hasMembers_ = false;            // the innermost of them
};

} // namespace

std::unique_ptr<AnswerPrinter> printExplanationObjects(std::ostream& out, std::string target) {
    return std::make_unique<ObjectsPrinter>(out, std::move(target));
}

} // namespace Agent
