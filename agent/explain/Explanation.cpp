#include "agent/explain/Explanation.h"

#include <type_traits>
#include <variant>

#include "agent/document/JsonReader.h"
#include "agent/explain/IntfAnswer.h"
#include "agent/explain/PrefixAnswer.h"

namespace Agent {

std::unique_ptr<Answer> explain(const AgentView& view, const ExplainTarget& target,
                                const std::optional<L3::VrfName>& vrf) {
    return std::visit(
        [&](const auto& what) -> std::unique_ptr<Answer> {
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(what)>, std::string>) {
                return std::make_unique<IntfAnswer>(view, what, vrf);
            } else {
                return std::make_unique<PrefixAnswer>(view, what, vrf);
            }
        },
        target);
}

void printAnswer(Answer& answer, AnswerPrinter& printer) {
    std::string lines;
    while (answer.appendNext(lines)) {
    }
    std::string_view left = lines;
    while (!left.empty()) {
        const std::string_view text = left.substr(0, left.find('\n'));
        const ParsedJson json(text);
        printer.line(json.value(), text);
        left.remove_prefix(text.size() + 1);
    }
    printer.end();
}

} // namespace Agent
