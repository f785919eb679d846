#include "agent/viplog/VipLogReader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "agent/Errors.h"
#include "platform/orb/Error.h"

namespace Agent {

VipLogReader::VipLogReader(std::string name)
    : name_(std::move(name)), replay_(tables4_, tables6_) {}

void VipLogReader::read(std::streambuf& log) {
    using Traits = std::streambuf::traits_type;
    std::array<char, 65536> piece;
    try {
        while (!Traits::eq_int_type(log.sgetc(), Traits::eof())) {
            // No more than is there, so that the tables are as fresh as the log.
            const auto size = std::clamp<std::streamsize>(log.in_avail(), 1, piece.size());
            const auto count = log.sgetn(piece.data(), size);
            replay_.feed({piece.data(), static_cast<std::size_t>(count)});
        }
        replay_.finish();
    } catch (const Orb::ParseError& error) {
        throw BadInputError(name_ + ": " + error.what());
    }
}

} // namespace Agent
