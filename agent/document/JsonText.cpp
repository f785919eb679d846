#include "agent/document/JsonText.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "agent/patch/DocumentError.h"
#include "agent/patch/DocumentPlace.h"

namespace Agent {

namespace {

using json = nlohmann::json;

/// Builds the value from the parser's events, and knows where it is at all times.
class Builder : public nlohmann::json_sax<json> {
  public:
    json take() { return std::move(root_); }

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(value); }
    bool number_unsigned(number_unsigned_t value) override { return add(value); }
    bool number_float(number_float_t value, const string_t&) override { return add(value); }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t&) override { return false; }

    bool start_object(std::size_t) override { return open(json::object()); }
    bool start_array(std::size_t) override { return open(json::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& value) override {
        Level& level = levels_.back();
        const auto [member, added] = level.container->emplace(value, nullptr);
        level.key = std::move(value);
        if (!added) {
            throw DocumentError(pointer(), "is given twice");
        }
        level.member = &*member;
        return true;
    }

    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::detail::exception& error) override {
        const bool range = dynamic_cast<const json::out_of_range*>(&error) != nullptr;
        throw DocumentError(pointer(),
                            (range ? "number out of range at byte " : "invalid JSON at byte ")
                                + std::to_string(position),
                            position);
    }

  private:
    struct Level {
        json* container;
        json* member = nullptr; // where an object's next value goes
        std::string key;        // of that member
    };

    json* place(json&& value) {
        if (levels_.empty()) {
            root_ = std::move(value);
            return &root_;
        }
        Level& level = levels_.back();
        if (level.member == nullptr) {
            level.container->push_back(std::move(value));
            return &level.container->back();
        }
        *level.member = std::move(value);
        return level.member;
    }

    bool add(json&& value) {
        place(std::move(value));
        return true;
    }

    bool open(json&& container) {
        if (levels_.size() == maxJsonDepth) {
            throw DocumentError(pointer(), "is nested too deeply");
        }
        json* const placed = place(std::move(container));
        levels_.push_back({placed, nullptr, {}});
        return true;
    }

    bool close() {
        levels_.pop_back();
        return true;
    }

    /// Of the value being read.
    std::string pointer() const {
        std::string text;
        for (const Level& level : levels_) {
            if (level.container->is_array()) {
                appendPointerStep(text, std::to_string(level.container->size()));
            } else if (level.member != nullptr || !level.key.empty()) {
                appendPointerStep(text, level.key);
            }
        }
        return text;
    }

    json root_;
    std::vector<Level> levels_;
};

} // namespace

json parseJson(std::string_view text) {
    Builder builder;
    json::sax_parse(text, &builder);
    return builder.take();
}

} // namespace Agent
