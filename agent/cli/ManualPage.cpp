#include "agent/cli/ManualPage.h"

#include <algorithm>
#include <cctype>
#include <ostream>
#include <string>
#include <string_view>

#include "directnet/version.h"

namespace Agent {

namespace {

/// The text as roff prints it: dashes that can be copied, and no line that is a request. A line
/// that begins with spaces stays a line of its own.
std::string roff(std::string_view text) {
    std::string result;
    bool isLineStart = true;
    for (const char character : text) {
        if (isLineStart && (character == '.' || character == '\'')) {
            result += "\\&";
        }
        isLineStart = character == '\n';
        if (character == '-') {
            result += "\\-";
        } else if (character == '\\') {
            result += "\\e";
        } else if (isLineStart) {
            result += "\n.br\n";
        } else if (character != ' ' || !result.ends_with('\n')) {
            result += character;
        }
    }
    return result;
}

std::string bold(std::string_view text) { return "\\fB" + roff(text) + "\\fR"; }

std::string italic(std::string_view text) { return "\\fI" + roff(text) + "\\fR"; }

/// What stands for the value, on the same line as what is before it.
std::string valueOf(const Argument& argument) {
    if (!argument.placeholder.empty()) {
        return "\\ " + italic(argument.placeholder);
    }
    std::string choices;
    for (const std::string& choice : argument.choices) {
        choices += (choices.empty() ? "" : "|") + bold(choice);
    }
    return choices.empty() ? "" : "\\ " + choices;
}

/// An argument with what stands for its value.
std::string formOf(const Argument& argument) {
    return argument.isOption() ? bold(argument.name) + valueOf(argument) : italic(argument.name);
}

void writeHead(std::ostream& out, const std::string& page, std::string_view summary) {
    std::string title = page;
    std::ranges::transform(title, title.begin(),
                           [](unsigned char letter) { return std::toupper(letter); });
    out << ".TH " << roff(title) << " 1 \"\" \"DirectNet " DIRECTNET_VERSION "\"\n"
        << ".nh\n.ad l\n.SH NAME\n"
        << roff(page) << " \\- " << roff(summary) << "\n.SH SYNOPSIS\n";
}

void writeEntry(std::ostream& out, std::string_view form, std::string_view text) {
    out << ".TP\n" << form << '\n' << text << '\n';
}

void writeCommonOptions(std::ostream& out) {
    writeEntry(out, bold("-h") + ", " + bold("--help"), "Print the usage in short, and end.");
    writeEntry(out, bold("--version"), "Print the version, and end.");
}

void writeExitStatus(std::ostream& out) {
    out << ".SH EXIT STATUS\n";
    writeEntry(out, bold("0"), "All went well.");
    writeEntry(out, bold("1"),
               "A failure, such as output that cannot be written or an agent that cannot be\n"
               "reached.");
    writeEntry(out, bold("2"), "Bad usage, or bad input.");
}

} // namespace

void writeProgramPage(std::ostream& out, const std::vector<Command>& commands) {
    writeHead(out, "directnet", "connected-route agent");
    out << bold("directnet") << ' ' << italic("COMMAND") << " [" << italic("ARGUMENT") << "]...\n"
        << ".SH DESCRIPTION\n"
           "Keeps the connected routes of this machine's VRFs: the routes that follow from the\n"
           "addresses of its interfaces, from virtual addresses, and from leaks between VRFs.\n"
           ".SH COMMANDS\n"
           "Each has a page of its own.\n";
    for (const Command& command : commands) {
        writeEntry(out, ".BR directnet\\-" + roff(command.name) + " (1)", roff(command.summary()));
    }
    out << ".SH OPTIONS\n";
    writeCommonOptions(out);
    writeExitStatus(out);
}

void writeCommandPage(std::ostream& out, const Command& command) {
    writeHead(out, "directnet-" + command.name, command.summary());
    out << bold("directnet " + command.name);
    for (const Argument& argument : command.arguments) {
        const std::string form = formOf(argument);
        out << ' ' << (argument.isRequired ? form : '[' + form + ']')
            << (argument.isRepeated() ? "..." : "");
    }
    out << "\n.SH DESCRIPTION\n" << roff(command.text()) << "\n.SH OPTIONS\n";
    for (const Argument& argument : command.arguments) {
        writeEntry(out, formOf(argument), roff(argument.text()));
    }
    writeCommonOptions(out);
    writeExitStatus(out);
}

} // namespace Agent
