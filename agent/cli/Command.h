#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace Agent {

/// An argument of a command: one whose name begins with dashes is an option, any other goes by its
/// place.
struct Argument {
    /// Returns what is wrong with a value; empty if nothing is.
    using Complaint = std::function<std::string(const std::string& value)>;

    std::string name{};
    std::string help{};
    /// Where the value is stored: a bool is set to true by a flag, a vector takes the values of an
    /// option that may be given many times. What is there before is the default.
    std::variant<bool*, std::string*, int*, std::vector<std::string>*> value{};
    std::string placeholder{}; ///< what stands for the value in the help
    bool isRequired = false;
    std::vector<std::string> choices{};         ///< the permitted values; empty for any
    std::optional<std::pair<int, int>> range{}; ///< of a number, lowest and highest
    std::string wordForLowest{};                ///< may stand for the lowest number
    Complaint complaint{};
    std::string excludes{}; ///< an option listed before, which cannot be given with this one

    bool isOption() const { return name.starts_with('-'); }
    bool takesValue() const { return !std::holds_alternative<bool*>(value); }
    bool isRepeated() const { return std::holds_alternative<std::vector<std::string>*>(value); }
    /// What it is, in sentences; a line that begins with spaces is one of its own.
    std::string text() const;
};

/// A command of the program.
struct Command {
    std::string name{};
    std::string description{};
    std::vector<Argument> arguments{}; ///< they point to objects that `run` keeps alive
    /// Does the command's work with the arguments given. Throws BadInputError and FailureError.
    std::function<void()> run{};

    /// What it does, in sentences.
    std::string text() const;
    /// The same in the words before the first punctuation.
    std::string summary() const;
};

} // namespace Agent
