#include "platform/ringlog/FunctionName.h"

#include <cctype>

namespace Ringlog {
namespace {

/// The text of a signature does not tell a namespace from a class; it only marks the unnamed
/// namespace, which leaves no name. Classes start in upper case.
bool isNamespace(std::string_view name) {
    return name.empty() || std::islower(static_cast<unsigned char>(name.front())) != 0;
}

bool isIdentifier(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

/// Walks a signature from left to right and keeps the last two names of the qualified name it is
/// in. A space outside brackets starts a new name, which is how return types fall away.
class SignatureReader {
  public:
    explicit SignatureReader(std::string_view signature) : rest_(signature) {}

    std::string name() {
        while (!rest_.empty() && step()) {
        }
        if (isNamespace(outer_)) {
            return inner_;
        }
        return std::string(outer_) + "::" + inner_;
    }

  private:
    bool startsWith(std::string_view text) const { return rest_.substr(0, text.size()) == text; }

    char takeOne() {
        char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    bool tryTake(std::string_view text) {
        if (!startsWith(text)) {
            return false;
        }
        rest_.remove_prefix(text.size());
        return true;
    }

    /// Takes one bracketed group, nested groups included; unbalanced text is taken whole.
    void skipGroup(char open, char close) {
        int depth = 0;
        while (!rest_.empty()) {
            char c = takeOne();
            depth += c == open ? 1 : c == close ? -1 : 0;
            if (depth == 0) {
                return;
            }
        }
    }

    void startName() {
        outer_.clear();
        inner_.clear();
    }

    /// Takes the next piece; false when the function's name is complete.
    bool step() {
        if (inner_.empty() && atOperator()) {
            takeOperator();
            return true;
        }
        if (tryTake("::")) {
            outer_ = std::move(inner_);
            inner_.clear();
            return true;
        }
        switch (rest_.front()) {
        case '<':
            skipGroup('<', '>');
            return true;
        case '[': // an ABI tag, or the list of template arguments at the end
            skipGroup('[', ']');
            return true;
        case '{': // GCC's unnamed namespace
            skipGroup('{', '}');
            return true;
        case '(':
            return takeParentheses();
        case ' ':
        case '*':
        case '&':
            takeOne();
            startName();
            return true;
        default:
            inner_ += takeOne();
            return true;
        }
    }

    bool atOperator() const {
        constexpr std::string_view word = "operator";
        return startsWith(word) && rest_.size() > word.size() && !isIdentifier(rest_[word.size()]);
    }

    /// Takes an operator's name up to its parameters: "operator()", "operator<<", "operator bool".
    void takeOperator() {
        constexpr std::string_view word = "operator";
        rest_.remove_prefix(word.size());
        inner_ = word;
        if (tryTake("()")) {
            inner_ += "()";
            return;
        }
        bool conversion = startsWith(" ");
        while (!rest_.empty() && rest_.front() != '(') {
            if (conversion && rest_.front() == '<') {
                skipGroup('<', '>');
            } else {
                inner_ += takeOne();
            }
        }
        dropOperatorTemplateArguments();
    }

    /// Clang writes the template arguments of an operator behind it: "operator<<<int>".
    void dropOperatorTemplateArguments() {
        constexpr std::size_t symbol = std::string_view("operator").size();
        std::size_t open = inner_.find('<', symbol);
        while (open != std::string::npos && open + 1 < inner_.size()
               && (inner_[open + 1] == '<' || inner_[open + 1] == '=' || open == symbol)
               && !isIdentifier(inner_[open + 1])) {
            open = inner_.find('<', open + 1);
        }
        if (open != std::string::npos && open > symbol && inner_.back() == '>'
            && isIdentifier(inner_[open + 1])) {
            inner_.resize(open);
        }
    }

    /// Parentheses are an unnamed namespace or class, part of a return type, or the parameters.
    bool takeParentheses() {
        if (startsWith("(anonymous")) {
            skipGroup('(', ')');
            return true;
        }
        bool namesType = inner_.empty() || (outer_.empty() && inner_ == "decltype");
        skipGroup('(', ')');
        if (namesType) {
            return true;
        }
        return entersLocalClass();
    }

    /// Behind the parameters: what belongs to a lambda keeps the enclosing function's name, a
    /// method of a local class has a name of its own.
    bool entersLocalClass() {
        while (tryTake(" const") || tryTake(" volatile") || tryTake(" &") || tryTake("&")) {
        }
        if (!tryTake("::") || startsWith("<lambda") || startsWith("(") || startsWith("{")) {
            return false;
        }
        startName();
        return true;
    }

    std::string_view rest_;
    std::string outer_;
    std::string inner_;
};

/// The class that a template was made over by its parameter `Sm`; empty if it has none.
std::string_view machineOf(std::string_view signature) {
    constexpr std::string_view parameter = "Sm = ";
    const std::size_t arguments = signature.rfind('[');
    const std::size_t found =
        arguments == std::string_view::npos ? arguments : signature.find(parameter, arguments);
    if (found == std::string_view::npos || isIdentifier(signature[found - 1])) {
        return {};
    }
    std::string_view name = signature.substr(found + parameter.size());
    name = name.substr(0, name.find_first_of(",;]"));
    const std::size_t qualifier = name.rfind("::");
    return qualifier == std::string_view::npos ? name : name.substr(qualifier + 2);
}

} // namespace

std::string functionName(std::string_view signature) {
    std::string name = SignatureReader(signature).name();
    const std::size_t qualifier = name.find("::");
    const std::string_view machine = machineOf(signature);
    if (!machine.empty() && qualifier != std::string::npos) {
        name.replace(0, qualifier, machine);
    }
    return name;
}

} // namespace Ringlog
