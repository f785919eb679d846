#include "agent/cli/Completion.h"

#include <ostream>
#include <string>
#include <string_view>

namespace Agent {

namespace {

constexpr std::string_view head = R"(# Completion of directnet for bash.
_directnet() {
    local word=${COMP_WORDS[COMP_CWORD]} last=${COMP_WORDS[COMP_CWORD - 1]} words='' kind=''
    ((COMP_CWORD > 1)) || last=
    case ${last:+${COMP_WORDS[1]}}:$last in
)";

constexpr std::string_view tail = R"(    esac
    [[ -z $kind ]] || compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen ${kind:+-A "$kind"} -W "$words" -- "$word")
}
complete -F _directnet directnet
)";

/// What bash calls the names that stand for the value; empty for any other value.
std::string_view kindOf(std::string_view placeholder) {
    if (placeholder == "FILE" || placeholder == "PATH") {
        return "file";
    }
    return placeholder == "DIR" ? "directory" : "";
}

/// One case of the script: behind `last` one of these words, or a name of this kind.
void writeCase(std::ostream& out, const std::string& place, const std::string& words,
               std::string_view kind) {
    out << "        " << place << ")";
    if (!words.empty()) {
        out << " words='" << words << "'";
    }
    if (!kind.empty()) {
        out << (words.empty() ? "" : ";") << " kind=" << kind;
    }
    out << " ;;\n";
}

void add(std::string& words, std::string_view word) {
    if (!word.empty()) {
        words.append(words.empty() ? "" : " ").append(word);
    }
}

std::string choicesOf(const Argument& argument) {
    std::string words;
    for (const std::string& choice : argument.choices) {
        add(words, choice);
    }
    return words;
}

void writeCommand(std::ostream& out, const Command& command) {
    std::string words;
    std::string_view kind;
    for (const Argument& argument : command.arguments) {
        if (!argument.isOption()) {
            add(words, choicesOf(argument));
            kind = kindOf(argument.name).empty() ? kind : kindOf(argument.name);
            continue;
        }
        add(words, argument.name);
        if (argument.takesValue()) {
            writeCase(out, command.name + ':' + argument.name, choicesOf(argument),
                      kindOf(argument.placeholder));
        }
    }
    add(words, "--help --version");
    writeCase(out, command.name + ":*", words, kind);
}

} // namespace

void writeCompletion(std::ostream& out, const std::vector<Command>& commands) {
    out << head;
    std::string names;
    for (const Command& command : commands) {
        add(names, command.name);
        writeCommand(out, command);
    }
    add(names, "--help --version");
    writeCase(out, ":", names, "");
    out << tail;
}

} // namespace Agent
