#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>

#include "platform/ringlog/CallSite.h"

namespace Ringlog {

/// A named switch of the text trace. Its level is the highest level that is printed; the level it
/// is made with is `off`, which prints nothing.
///
/// There is one handle per name in the process, made on first use and never destroyed; asking for
/// it is safe from any thread. Levels and the sink are set on the agent thread.
class TraceHandle {
  public:
    /// Receives a finished line, without its line end.
    using Sink = std::function<void(std::string_view line)>;

    static constexpr int off = -1;

    TraceHandle(const TraceHandle&) = delete;
    TraceHandle& operator=(const TraceHandle&) = delete;
    ~TraceHandle() = default;

    static TraceHandle& named(std::string_view name);

    /// Sets the level of every handle, those still to be made included.
    static void levelOfAllIs(int level);

    /// Where lines go; an empty sink restores the default, standard error.
    static void sinkIs(Sink sink);

    /// Whether some handle prints `level`: the one load and compare of a disabled statement.
    static bool anyEnabled(int level) { return level <= highest_.load(std::memory_order_relaxed); }

    const std::string& name() const { return name_; }
    int level() const { return level_.load(std::memory_order_relaxed); }
    bool enabled(int level) const { return level <= level_.load(std::memory_order_relaxed); }
    void levelIs(int level);

    /// Prints "NAME LEVEL UNIT:LINE [Class::method] text" to the sink, whatever the handle's
    /// level. Never fails: a line that cannot be printed is lost.
    void print(int level, const CallSite& site, std::string_view text) const noexcept;

  private:
    struct Registry;

    TraceHandle(std::string_view name, int level) : name_(name), level_(level) {}

    static Registry& registry();

    inline static constinit std::atomic<int> highest_{off};

    std::string name_;
    std::atomic<int> level_;
};

} // namespace Ringlog
