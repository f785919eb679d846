#include "agent/document/JsonLines.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

namespace Agent {

namespace {

/// Walks over JSON without building it. What is wrong with it may lead astray, but not out of the
/// text.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : text_(text) {}

    std::size_t at() const { return at_; }
    char next() const { return at_ < text_.size() ? text_[at_] : '\0'; }
    void step() { ++at_; }

    void skipBlanks() { at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size()); }

    std::string_view string() {
        const std::size_t begin = at_++;
        while (at_ < text_.size() && text_[at_] != '"') {
            at_ += text_[at_] == '\\' ? 2 : 1;
        }
        return text_.substr(begin, ++at_ - begin);
    }

    void skipValue() {
        int depth = 0;
        do {
            skipBlanks();
            if (next() == '"') {
                string();
            } else if (next() == '{' || next() == '[') {
                ++depth;
                step();
            } else if (next() == '}' || next() == ']') {
                --depth;
                step();
            } else if (next() == ',' || next() == ':') {
                step();
            } else {
                at_ = std::min(text_.find_first_of(" \t\r\n,:{}[]\"", at_), text_.size());
            }
        } while (depth > 0 && at_ < text_.size());
    }

    /// Goes from an object to the key's value. Returns where the key stands, or npos, and then is
    /// of no further use.
    std::size_t enter(const std::string& key) {
        step();
        for (skipBlanks(); next() == '"'; skipBlanks()) {
            const std::size_t begin = at_;
            const bool found = nlohmann::json::parse(string(), nullptr, false) == key;
            skipBlanks();
            step();
            skipBlanks();
            if (found) {
                return begin;
            }
            skipValue();
            skipBlanks();
            if (next() == ',') {
                step();
            }
        }
        return std::string_view::npos;
    }

  private:
    std::string_view text_;
    std::size_t at_ = 0;
};

std::string unescaped(std::string_view step) {
    std::string key;
    for (std::size_t i = 0; i < step.size(); ++i) {
        const bool escape = step[i] == '~' && i + 1 < step.size();
        key += escape ? (step[++i] == '1' ? '/' : '~') : step[i];
    }
    return key;
}

/// Where the byte at `offset` stands.
TextPlace placeAt(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    const auto isFirst = [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80; };
    return {1 + static_cast<std::size_t>(std::ranges::count(before, '\n')),
            1 + static_cast<std::size_t>(std::ranges::count_if(line, isFirst))};
}

/// Where the value that a JSON pointer names begins.
std::size_t offsetOf(std::string_view text, std::string_view pointer) {
    Scanner scanner(text);
    scanner.skipBlanks();
    std::size_t found = scanner.at();
    while (!pointer.empty() && scanner.next() == '{') {
        pointer.remove_prefix(1);
        const std::string_view step = pointer.substr(0, pointer.find('/'));
        pointer.remove_prefix(step.size());
        const std::size_t at = scanner.enter(unescaped(step));
        if (at == std::string_view::npos) {
            break;
        }
        found = at;
    }
    return found;
}

} // namespace

TextPlace placeOf(std::string_view text, const DocumentError& error) {
    return placeAt(text, error.byte() ? std::max<std::size_t>(*error.byte(), 1) - 1
                                      : offsetOf(text, error.pointer()));
}

} // namespace Agent
