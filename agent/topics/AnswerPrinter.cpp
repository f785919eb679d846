#include "agent/topics/AnswerPrinter.h"

namespace Agent {

namespace {

class LinesPrinter final : public AnswerPrinter {
  public:
    explicit LinesPrinter(std::ostream& out) : out_(out) {}

    void line(const JsonValue&, std::string_view text) override { out_ << text << '\n'; }
    void end() override {}

  private:
    std::ostream& out_;
};

} // namespace

std::unique_ptr<AnswerPrinter> printLines(std::ostream& out) {
    return std::make_unique<LinesPrinter>(out);
}

} // namespace Agent
