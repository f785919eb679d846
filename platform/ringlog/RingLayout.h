#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The bytes of a ring trace file, in the machine's byte order:
///
///   FileHeader          padded to one page
///   descriptor table    entries {DescriptorHeader, unit, function, text} back to back, never
///   changed message blocks      blockCount blocks of blockSize bytes, filled in turn and over
///   again
///
/// A block is {BlockHeader, messages}; a message lies in one block and is {MessageHeader,
/// arguments}. Since each block starts with a message and carries its sequence number, a reader
/// finds its feet at every block, wherever the writer stopped.
///
/// A descriptor's text is literal but for "%%" (a percent sign) and one placeholder per argument:
///   %i %u  8 bytes, signed and unsigned       %d  8 bytes, a double       %b  1 byte
///   %s     2 bytes of length, then the bytes  %p  RingAddress: family, length, 16 bytes
namespace Ringlog::Layout {

inline constexpr std::array<char, 8> magic = {'R', 'I', 'N', 'G', 'L', 'O', 'G', '1'};
inline constexpr std::uint32_t byteOrder = 0x01020304;
inline constexpr std::uint32_t pageSize = 4096;
inline constexpr std::uint32_t blockSize = 1024;
inline constexpr std::size_t maxText = 1024;         ///< bytes of a descriptor's text
inline constexpr std::size_t maxDescriptors = 65535; ///< ids are 16 bits
inline constexpr std::size_t addressBytes = 16;

struct FileHeader {
    std::array<char, 8> magic;
    std::uint32_t byteOrder;
    std::uint32_t processId;
    std::uint32_t tableSize; ///< bytes reserved for the descriptor table
    std::uint32_t tableUsed; ///< bytes of it in use; written after the entry
    std::uint32_t blockSize;
    std::uint32_t blockCount;
};

struct DescriptorHeader {
    std::uint32_t line;
    std::uint16_t unitSize;
    std::uint16_t functionSize;
    std::uint16_t textSize;
    std::uint16_t reserved;
};

struct BlockHeader {
    std::uint64_t sequence; ///< counts the blocks begun, from one; zero is a block never used
    std::uint32_t used;     ///< bytes of messages; written after the message
    std::uint32_t reserved;
};

struct MessageHeader {
    std::uint64_t time; ///< nanoseconds of the clock the file was opened with
    std::uint16_t size; ///< header included
    std::uint16_t descriptor;
    std::uint32_t reserved;
};

inline constexpr std::size_t blockRoom = blockSize - sizeof(BlockHeader);

} // namespace Ringlog::Layout
