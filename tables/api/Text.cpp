#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <arpa/inet.h>

#include "directnet/tables.h"
#include "tables/reader/RecordTraits.h"

// Prefixes and names as text.

namespace {

using namespace Tables;

static_assert(DIRECTNET_PREFIX_TEXT_SIZE >= INET6_ADDRSTRLEN + sizeof "/128" - 1);

bool isPrefixOf(const directnet_prefix& prefix) {
    PrefixBytes bytes;
    std::memcpy(bytes.address, prefix.address, sizeof bytes.address);
    return isPrefix(bytes, prefix.family, prefix.length);
}

/// A decimal number of at most three digits and nothing else; -1 if it is not one.
int lengthFrom(const char* text) {
    int number = 0;
    std::size_t digits = 0;
    for (; text[digits] >= '0' && text[digits] <= '9'; ++digits) {
        if (digits == 3) {
            return -1;
        }
        number = number * 10 + (text[digits] - '0');
    }
    return digits != 0 && text[digits] == '\0' ? number : -1;
}

} // namespace

int directnet_tables_prefix_text(const directnet_prefix* prefix, char* text, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    text[0] = '\0';
    char address[INET6_ADDRSTRLEN];
    if (!isPrefixOf(*prefix)
        || ::inet_ntop(prefix->family, prefix->address, address, sizeof address) == nullptr) {
        return 0;
    }
    const int written = std::snprintf(text, size, "%s/%u", address, unsigned{prefix->length});
    if (written < 0 || static_cast<std::size_t>(written) >= size) {
        text[0] = '\0';
        return 0;
    }
    return 1;
}

int directnet_tables_prefix_parse(const char* text, directnet_prefix* prefix) {
    const char* const slash = std::strchr(text, '/');
    const std::size_t addressLength =
        slash == nullptr ? std::strlen(text) : static_cast<std::size_t>(slash - text);
    char address[INET6_ADDRSTRLEN];
    if (addressLength >= sizeof address) {
        return 0;
    }
    std::memcpy(address, text, addressLength);
    address[addressLength] = '\0';

    directnet_prefix parsed{};
    parsed.family = std::strchr(address, ':') == nullptr ? ipv4 : ipv6;
    if (::inet_pton(parsed.family, address, parsed.address) != 1) {
        return 0;
    }
    const int most = parsed.family == ipv4 ? 32 : 128;
    const int length = slash == nullptr ? most : lengthFrom(slash + 1);
    if (length < 0 || length > most) {
        return 0;
    }
    parsed.length = static_cast<std::uint8_t>(length);
    if (!isPrefixOf(parsed)) {
        return 0;
    }
    *prefix = parsed;
    return 1;
}

const char* directnet_tables_route_type_name(std::uint8_t type) {
    switch (type) {
    case DIRECTNET_RECEIVE:
        return "receive";
    case DIRECTNET_ATTACHED_HOST:
        return "attached-host";
    case DIRECTNET_RECEIVE_BROADCAST:
        return "receive-broadcast";
    case DIRECTNET_DROP_BROADCAST:
        return "drop-broadcast";
    case DIRECTNET_CONNECTED:
        return "connected";
    default:
        return "";
    }
}

const char* directnet_tables_via_kind_name(directnet_via_kind kind) {
    switch (kind) {
    case DIRECTNET_VIA_CONNECTED:
        return "connected";
    case DIRECTNET_VIA_RECEIVE:
        return "receive";
    case DIRECTNET_VIA_RECEIVE_BROADCAST:
        return "receive-broadcast";
    case DIRECTNET_VIA_DIRECTED_BROADCAST:
        return "directed-broadcast";
    default:
        return "";
    }
}
