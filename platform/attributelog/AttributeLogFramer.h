#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Orb {

/// Puts the records of one attribute log into frames.
class AttributeLogFramer {
  public:
    static void appendHead(std::string& out);

    /// Throws RangeError for a body of more than maxBodySize bytes.
    void append(std::string& out, std::string_view body);

  private:
    std::uint32_t crc_ = 0;
};

} // namespace Orb
