#include "agent/explain/ExplanationLine.h"

#include "agent/base/Errors.h"

namespace Agent {

ExplanationLine kindOf(const JsonValue& object) {
    if (object.member("route").exists()) {
        return ExplanationLine::prefix;
    }
    if (object.member("kind").exists()) {
        return ExplanationLine::contributor;
    }
    if (object.member("whyNot").exists()) {
        return ExplanationLine::candidate;
    }
    if (object.member("device").exists()) {
        return ExplanationLine::interface;
    }
    return object.member("role").exists() ? ExplanationLine::address
                                          : ExplanationLine::contribution;
}

std::size_t depthOf(ExplanationLine kind) {
    switch (kind) {
    case ExplanationLine::prefix:
    case ExplanationLine::interface:
        break;
    case ExplanationLine::contributor:
    case ExplanationLine::candidate:
    case ExplanationLine::address:
        return 1;
    case ExplanationLine::contribution:
        return 2;
    }
    return 0;
}

std::string_view listWith(ExplanationLine kind) {
    switch (kind) {
    case ExplanationLine::prefix:
    case ExplanationLine::interface:
        break;
    case ExplanationLine::contributor:
        return "contributors";
    case ExplanationLine::candidate:
        return "candidates";
    case ExplanationLine::address:
        return "addresses";
    case ExplanationLine::contribution:
        return "contributes";
    }
    return {};
}

std::string_view listOf(ExplanationLine kind) {
    switch (kind) {
    case ExplanationLine::prefix:
        return listWith(ExplanationLine::contributor);
    case ExplanationLine::interface:
        return listWith(ExplanationLine::address);
    case ExplanationLine::address:
        return listWith(ExplanationLine::contribution);
    case ExplanationLine::contributor:
    case ExplanationLine::candidate:
    case ExplanationLine::contribution:
        break;
    }
    return {};
}

void ExplanationPrinter::line(const JsonValue& object, std::string_view text) {
    isEmpty_ = false;
    print(kindOf(object), object, text);
}

void ExplanationPrinter::end() {
    if (isEmpty_) {
        throw FailureError(target_ + " is no prefix, no address and no interface that is there");
    }
    finish();
}

} // namespace Agent
