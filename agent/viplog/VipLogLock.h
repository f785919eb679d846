#pragma once

namespace Agent {

/// The writer of a log in an ordinary file holds a lock on it, which goes with the writer, however
/// that ends. It tells readers that more may come, and keeps a second writer away.
///
/// Takes the lock. Returns false if another holds it; true where there are no locks.
bool lockVipLog(int descriptor);
/// Whether somebody else holds it.
bool isVipLogLocked(int descriptor);

} // namespace Agent
