#pragma once

#include <cstdint>

namespace Orb {

class ActivityManager;

/// Waits for a file descriptor to become ready, in the loop of the thread's activity manager, for
/// as long as it lives; that activity manager must outlive it. It does not own the descriptor. From
/// inside a callback reactors may be made, changed and destroyed, the called one included.
class FileDescriptorReactor {
  public:
    explicit FileDescriptorReactor(int descriptor);
    FileDescriptorReactor(const FileDescriptorReactor&) = delete;
    FileDescriptorReactor& operator=(const FileDescriptorReactor&) = delete;
    virtual ~FileDescriptorReactor();

    int descriptor() const { return descriptor_; }

    /// What to wait for; reading at first.
    bool wantsRead() const { return wantsRead_; }
    bool wantsWrite() const { return wantsWrite_; }
    void wantsReadIs(bool wants) { wantsRead_ = wants; }
    void wantsWriteIs(bool wants) { wantsWrite_ = wants; }

    /// Reading (writing) will not block; it may report an error or the end.
    virtual void onReadable() {}
    virtual void onWritable() {}

  private:
    ActivityManager* manager_;
    std::uint64_t id_;
    int descriptor_;
    bool wantsRead_ = true;
    bool wantsWrite_ = false;
};

} // namespace Orb
