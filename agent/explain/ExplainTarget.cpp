#include "agent/explain/ExplainTarget.h"

#include <optional>

#include "agent/base/Utf8.h"
#include "agent/patch/DocumentError.h"
#include "platform/lanx/IpGenAddrWithMask.h"
#include "platform/orb/value/Error.h"

namespace Agent {

namespace {

template <typename T>
std::optional<T> readIf(std::string_view text) {
    try {
        return T::fromString(text);
    } catch (const Orb::Error&) {
        return std::nullopt;
    }
}

} // namespace

ExplainTarget readExplainTarget(std::string_view text) {
    if (text.empty() || !isUtf8(text)) {
        throw DocumentError("", "must be a prefix, an address or a name in UTF-8");
    }
    if (const auto address = readIf<Lanx::IpGenAddr>(text)) {
        return *address;
    }
    if (const auto prefix = readIf<Lanx::IpGenPrefix>(text)) {
        return *prefix;
    }
    if (const auto address = readIf<Lanx::IpGenAddrWithMask>(text)) {
        throw DocumentError("", "has host bits: the prefix is " + address->subnet().toString()
                                    + ", the address " + address->addr().toString());
    }
    return std::string(text);
}

} // namespace Agent
