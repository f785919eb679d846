#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/ringlog/RingArgument.h"
#include "platform/ringlog/RingFile.h"

namespace Ringlog {
namespace Detail {

/// String literals are the same in every message of a statement, so they belong to its descriptor.
/// Anything that is a constant array of characters is taken for one.
template <typename T>
inline constexpr bool isLiteral = false;
template <std::size_t size>
inline constexpr bool isLiteral<const char (&)[size]> = true;

template <typename T>
using Argument = RingArgument<std::remove_cvref_t<T>>;

/// Appends what one operand contributes to the text of the descriptor. T is its type as forwarded,
/// which tells a literal from a buffer.
template <typename T>
void describePiece(std::string& text, const std::remove_reference_t<T>& operand) {
    if constexpr (isLiteral<T>) {
        for (char c : std::string_view(operand)) {
            text.append(c == '%' ? 2 : 1, c);
        }
    } else {
        text += '%';
        text += ringLetter<decltype(Argument<T>::of(operand))>();
    }
}

template <typename T>
void putPiece(RingFile& file, const std::remove_reference_t<T>& operand) {
    if constexpr (!isLiteral<T>) {
        file.put(Argument<T>::of(operand));
    }
}

template <typename... Ts>
[[gnu::noinline]] void describe(RingFile& file, MessageDescriptor& descriptor,
                                const std::remove_reference_t<Ts>&... operands) {
    std::string text;
    (describePiece<Ts>(text, operands), ...);
    file.describe(descriptor, text);
}

} // namespace Detail

/// Writes one message to the ring: the literals among the operands are its text, the others its
/// arguments. One descriptor goes with one list of operand types and one set of literals.
template <typename... Ts>
void writeMessage(RingFile& file, MessageDescriptor& descriptor, Ts&&... operands) {
    if (!file.knows(descriptor)) {
        Detail::describe<Ts...>(file, descriptor, operands...);
    }
    if (file.startMsg(descriptor)) {
        (Detail::putPiece<Ts>(file, operands), ...);
        file.endMsg();
    }
}

} // namespace Ringlog
