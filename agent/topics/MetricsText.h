#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace Agent {

/// Appends OpenMetrics text, family by family; finish() ends it.
class MetricsText {
  public:
    enum class Type { gauge, counter, info };
    using Label = std::pair<std::string_view, std::string_view>;
    using Labels = std::initializer_list<Label>;

    explicit MetricsText(std::string& out) : out_(out) {}

    /// Begins a family, whose samples follow. The name has no suffix that its type brings along. A
    /// unit, where there is one, is the end of the name. `help` is one line.
    void family(std::string_view name, Type type, std::string_view help,
                std::string_view unit = {});

    /// A sample of the present family. The values of labels may be any text.
    void sample(const Labels& labels, std::string_view value);
    void sample(const Labels& labels, std::uint64_t value) {
        sample(labels, std::string_view(std::to_string(value)));
    }

    void finish() { out_ += "# EOF\n"; }

  private:
    void describe(std::string_view keyword, std::string_view text);

    std::string& out_;
    std::string name_;
    Type type_ = Type::gauge;
};

} // namespace Agent
