#pragma once

namespace Tables {

/// Loads and stores of memory that two processes share. Each is one instruction that the other side
/// sees whole. A load sees everything that was stored before the value that it finds; a store comes
/// after everything that stands before it.
template <typename T>
T load(const T& from) {
    return __atomic_load_n(&from, __ATOMIC_ACQUIRE);
}

template <typename T>
void store(T& to, T value) {
    __atomic_store_n(&to, value, __ATOMIC_RELEASE);
}

} // namespace Tables
