#pragma once

#include "platform/orb/loop/FileDescriptor.h"

namespace Agent {

using Orb::FileDescriptor;

} // namespace Agent
