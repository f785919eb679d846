#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "agent/topics/AnswerPrinter.h"

namespace Agent {

/// What a line of an explanation is: a PrefixRow, ContributorRow, CandidateRow, InterfaceRow,
/// AddressRow or ContributionRow.
enum class ExplanationLine { prefix, contributor, candidate, interface, address, contribution };

/// By the members that only one of them has.
ExplanationLine kindOf(const JsonValue& object);

/// How deep it lies in the object of its VRF: 0 for the object itself.
std::size_t depthOf(ExplanationLine kind);
/// The list that it lies in; empty for the object itself.
std::string_view listWith(ExplanationLine kind);
/// The list in it that is always there; empty if there is none.
std::string_view listOf(ExplanationLine kind);

/// Tells the lines of an explanation apart, and whether there are any.
class ExplanationPrinter : public AnswerPrinter {
  public:
    explicit ExplanationPrinter(std::string target) : target_(std::move(target)) {}

    void line(const JsonValue& object, std::string_view text) final;
    void end() final;

  private:
    virtual void print(ExplanationLine kind, const JsonValue& object, std::string_view text) = 0;
    virtual void finish() = 0;

    std::string target_;
    bool isEmpty_ = true;
};

} // namespace Agent
