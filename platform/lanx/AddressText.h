#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/lanx/AddressBytes.h"

namespace Lanx {

/// Appends a dotted quad; `address` is in host order.
void appendIpText(std::string& out, std::uint32_t address);

/// The address of a dotted quad, in host order: four numbers without leading zeros and nothing
/// else. Throws ParseError.
std::uint32_t parseIpText(std::string_view text);

/// Appends the canonical form: lower case, no leading zeros, "::" for the longest (of equals the
/// first) run of two or more zero groups, a dotted quad at the end of a mapped IPv4 address.
void appendIp6Text(std::string& out, const AddressBytes& bytes);

/// The bytes of any of the usual spellings of an IPv6 address, without zone. Throws ParseError.
AddressBytes parseIp6Text(std::string_view text);

/// Appends "/LEN".
void appendLength(std::string& out, unsigned len);

/// Splits "ADDRESS/LEN": one to three digits, without leading zeros. Throws ParseError. Whether the
/// family has such a length is for the caller to say.
std::pair<std::string_view, unsigned> splitLength(std::string_view text);

/// Whether the text can only be IPv6.
inline bool looksLikeIp6(std::string_view text) { return text.find(':') != std::string_view::npos; }

} // namespace Lanx
