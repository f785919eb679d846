#include "agent/viplog/VipLogLock.h"

#include <cerrno>
#include <fcntl.h>

namespace Agent {

namespace {

struct flock wholeFile(short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

} // namespace

bool lockVipLog(int descriptor) {
    struct flock lock = wholeFile(F_WRLCK);
    return ::fcntl(descriptor, F_OFD_SETLK, &lock) == 0 || (errno != EAGAIN && errno != EACCES);
}

bool isVipLogLocked(int descriptor) {
    struct flock lock = wholeFile(F_RDLCK);
    return ::fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

} // namespace Agent
