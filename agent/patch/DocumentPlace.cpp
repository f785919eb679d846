#include "agent/patch/DocumentPlace.h"

namespace Agent {

std::string DocumentPlace::pointer() const {
    if (parent_ == nullptr) {
        return {};
    }
    std::string text = parent_->pointer();
    appendPointerStep(text, key_);
    return text;
}

void appendPointerStep(std::string& pointer, std::string_view key) {
    pointer += '/';
    for (const char c : key) {
        if (c == '~') {
            pointer += "~0";
        } else if (c == '/') {
            pointer += "~1";
        } else {
            pointer += c;
        }
    }
}

} // namespace Agent
