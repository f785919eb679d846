#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// How an attribute log is written. All numbers are big endian.
///
///     log     := head frame*
///     frame   := length:u32 crc:u32 body        length is that of the body, crc see below
///     body    := 0 count:u8 (length:u32 name)*  the types of the roots; the first frame
///              | 1 root:u8 change               a change below that root
///              | 2                              what came before was the state at the start
///              | 3                              the end of the log; the last frame
///     change  := 0 id:u32 key change            within the member of that key
///              | 1 id:u32 value                 an attribute has that value
///              | 1 id:u32 key value             a collection's member has that value
///              | 1 id:u32 key                   an owned member was made
///              | 1 id:u32 key count:u32 change* an object with that state was put in, in place of
///                                               another of its key
///              | 2 id:u32 key                   the member has gone
///
/// Ids are those of the declarations. The crc is the CRC-32C of the length and the body, continued
/// from that of the frame before, so that a frame that is lost, doubled or moved is noticed too.
namespace Orb::AttributeLogFormat {

constexpr std::string_view head{"\x8a"
                                "ALOG\n\x00\x01",
                                8}; // the last two bytes are the version

constexpr std::size_t frameHeadSize = 8;

/// What a reader keeps in memory of a log that it does not know to be good.
constexpr std::size_t maxBodySize = std::size_t{64} * 1024;

enum class Kind : std::uint8_t { roots = 0, change = 1, endOfState = 2, endOfLog = 3 };
enum class Op : std::uint8_t { within = 0, set = 1, remove = 2 };

} // namespace Orb::AttributeLogFormat
