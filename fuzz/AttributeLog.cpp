#include <cstddef>
#include <cstdint>
#include <string_view>

#include "directnet/virtualip/AllVrfVirtualIpStatus.h"
#include "platform/attributelog/AttributeLogFormat.h"
#include "platform/attributelog/AttributeLogFramer.h"
#include "platform/attributelog/AttributeLogReplay.h"
#include "platform/attributelog/LanxAttributeLogForm.h"
#include "platform/orb/value/Error.h"

namespace {

using Tables4 = Routing::DirectNet::Ipv4::AllVrfVirtualIpStatus;
using Tables6 = Routing::DirectNet::Ipv6::AllVrfVirtualIpStatus;

/// Makes well-framed records of the bytes: each is as long as the byte before it says. Checksums
/// would keep the fuzzer from anything behind the first frame.
std::string framed(std::string_view bytes) {
    std::string log;
    Orb::AttributeLogFramer framer;
    Orb::AttributeLogFramer::appendHead(log);
    std::string roots(1, static_cast<char>(Orb::AttributeLogFormat::Kind::roots));
    roots += '\2';
    Orb::appendLogString(roots, Tables4::orbTypeName);
    Orb::appendLogString(roots, Tables6::orbTypeName);
    framer.append(log, roots);
    while (!bytes.empty()) {
        const std::size_t size = static_cast<unsigned char>(bytes.front());
        bytes.remove_prefix(1);
        framer.append(log, bytes.substr(0, size));
        bytes.remove_prefix(size < bytes.size() ? size : bytes.size());
    }
    return log;
}

void replay(std::string_view log) {
    Orb::AttributeLogReplay<Tables4, Tables6> replay(Orb::makePtr<Tables4>(),
                                                     Orb::makePtr<Tables6>());
    try {
        replay.feed(log);
        replay.finish();
    } catch (const Orb::ParseError&) {
        return;
    }
}

} // namespace

/// Reads arbitrary bytes as an attribute log of the virtual addresses, and as the records of one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    replay(bytes);
    replay(framed(bytes));
    return 0;
}
