#include "platform/lanx/Prefix.h"

#include "platform/orb/value/Error.h"

namespace Lanx {

void throwInvalidPrefix() { throw Orb::RangeError("Prefix::validAsPrefix != true not allowed"); }

} // namespace Lanx
