#include "agent/topics/ChangeKind.h"

#include <algorithm>
#include <array>

#include "agent/base/Errors.h"

namespace Agent {

namespace {

struct Form {
    ChangeKind kind;
    std::string_view name;
    std::string_view sign;
    std::string (Colour::*coloured)(std::string_view) const;
};

constexpr std::array<Form, 4> forms{{{ChangeKind::is, "is", "=", &Colour::plain},
                                     {ChangeKind::comes, "comes", "+", &Colour::green},
                                     {ChangeKind::changes, "changes", "~", &Colour::yellow},
                                     {ChangeKind::goes, "goes", "-", &Colour::red}}};

const Form& formOf(ChangeKind kind) { return *std::ranges::find(forms, kind, &Form::kind); }

} // namespace

std::string_view changeName(ChangeKind kind) { return formOf(kind).name; }

std::string changeSign(ChangeKind kind, Colour colour) {
    const Form& form = formOf(kind);
    return (colour.*form.coloured)(form.sign);
}

ChangeKind ValueForm<ChangeKind>::read(const JsonValue& json) {
    const auto* const found = std::ranges::find(forms, json.string(), &Form::name);
    if (found == forms.end()) {
        throw FailureError("no kind of change is called " + json.string());
    }
    return found->kind;
}

} // namespace Agent
