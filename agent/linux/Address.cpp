#include "agent/linux/Address.h"

#include <arpa/inet.h>
#include <cstring>

namespace Agent::Linux {

Address Address::host() const {
    Address host = *this;
    host.length = hostLength();
    return host;
}

Address Address::subnet() const {
    Address subnet = *this;
    for (std::size_t i = 0; i < size(); ++i) {
        std::size_t first = i * 8;
        if (length <= first) {
            subnet.bytes[i] = 0;
        } else if (length < first + 8) {
            auto mask = static_cast<unsigned>(0xff00U >> (length - first));
            subnet.bytes[i] = static_cast<std::uint8_t>(bytes[i] & mask);
        }
    }
    return subnet;
}

std::string Address::text() const {
    std::array<char, INET6_ADDRSTRLEN> buffer{};
    ::inet_ntop(family, bytes.data(), buffer.data(), static_cast<socklen_t>(buffer.size()));
    return std::string(buffer.data()) + '/' + std::to_string(length);
}

std::size_t AddressHash::operator()(const Address& address) const noexcept {
    std::uint64_t high = 0;
    std::uint64_t low = 0;
    std::memcpy(&high, address.bytes.data(), sizeof high);
    std::memcpy(&low, address.bytes.data() + sizeof high, sizeof low);
    // Neighbouring addresses differ in few bits; multiply and fold so that they spread.
    std::uint64_t hash = (high ^ address.length) * 0x9e3779b97f4a7c15U;
    hash = (hash ^ (hash >> 32) ^ low) * 0xd6e8feb86659fd93U;
    return static_cast<std::size_t>(hash ^ (hash >> 32));
}

} // namespace Agent::Linux
