#include "agent/cli/HelpText.h"

#include <algorithm>
#include <sstream>

namespace Agent {

namespace {

constexpr std::size_t helpWidth = 79;
constexpr std::size_t helpColumn = 24; // where the text of an entry begins

/// The words in lines, of which all but the first begin with so many spaces. The first one begins
/// at the column `at`.
std::string wrapped(const std::string& text, std::size_t at, std::size_t indent) {
    std::istringstream words(text);
    std::string result;
    for (std::string word; words >> word;) {
        if (!result.empty() && at + 1 + word.size() > helpWidth) {
            result += '\n' + std::string(indent, ' ');
            at = indent;
        } else if (!result.empty()) {
            result += ' ';
            ++at;
        }
        result += word;
        at += word.size();
    }
    return result + '\n';
}

/// What an argument or a command is called and what it is. A line that begins with spaces stays a
/// line of its own.
std::string helpEntry(const std::string& form, const std::string& text) {
    std::string result = "  " + form;
    if (result.size() + 2 > helpColumn) {
        result += '\n';
    } else {
        result.resize(helpColumn, ' ');
    }
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t indent = helpColumn + line.find_first_not_of(' ');
        if (result.ends_with('\n')) {
            result.append(indent, ' ');
        }
        result += wrapped(line, indent, indent > helpColumn ? indent + 2 : indent);
    }
    return result;
}

std::string formInHelp(const Argument& argument) {
    std::string value = argument.placeholder;
    for (const std::string& choice : argument.choices) {
        value += (value.empty() ? "" : "|") + choice;
    }
    return argument.name + (argument.isOption() && !value.empty() ? ' ' + value : "");
}

std::string commonOptions() {
    return helpEntry("-h, --help", "Print this help, and end.")
           + helpEntry("--version", "Print the version, and end.");
}

/// The entries of the options, or of all other arguments.
std::string argumentsInHelp(const Command& command, bool areOptions) {
    std::string result;
    for (const Argument& argument : command.arguments) {
        if (argument.isOption() == areOptions) {
            result += helpEntry(formInHelp(argument), argument.text());
        }
    }
    return result;
}

} // namespace

std::string helpOfProgram(const std::vector<Command>& commands) {
    std::string result = "Usage: directnet COMMAND [ARGUMENT]...\n\n"
                         "Connected-route agent. \"directnet COMMAND --help\" says more.\n\n";
    for (const Command& command : commands) {
        result += helpEntry(command.name, command.summary());
    }
    return result + '\n' + commonOptions();
}

std::string helpOfCommand(const Command& command) {
    std::string usage = "Usage: directnet " + command.name + " [OPTION]...";
    for (const Argument& argument : command.arguments) {
        if (!argument.isOption()) {
            usage += argument.isRequired ? ' ' + argument.name : " [" + argument.name + ']';
        }
    }
    const std::string arguments = argumentsInHelp(command, false);
    return usage + "\n\n" + wrapped(command.text(), 0, 0) + '\n' + arguments
           + (arguments.empty() ? "" : "\n") + argumentsInHelp(command, true) + commonOptions();
}

} // namespace Agent
