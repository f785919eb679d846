#include "platform/orb/loop/FileDescriptorReactor.h"

#include "platform/orb/loop/ActivityManager.h"

namespace Orb {

FileDescriptorReactor::FileDescriptorReactor(int descriptor)
    : manager_(activityManager()), id_(manager_->nextDescriptor_++), descriptor_(descriptor) {
    manager_->descriptors_.emplace(id_, this);
}

FileDescriptorReactor::~FileDescriptorReactor() { manager_->descriptors_.erase(id_); }

} // namespace Orb
