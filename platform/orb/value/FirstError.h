#pragma once

#include <exception>
#include <utility>

namespace Orb {

/// Does several things of which each may throw, and all of them; what the first one threw is raised
/// when all is done.
class FirstError {
  public:
    template <typename Work>
    void attempt(Work&& work) {
        try {
            std::forward<Work>(work)();
        } catch (...) {
            keep(std::current_exception());
        }
    }

    void keep(std::exception_ptr error) {
        if (first_ == nullptr) {
            first_ = std::move(error);
        }
    }

    void raise() {
        if (first_ != nullptr) {
            std::rethrow_exception(std::exchange(first_, nullptr));
        }
    }

  private:
    std::exception_ptr first_;
};

} // namespace Orb
