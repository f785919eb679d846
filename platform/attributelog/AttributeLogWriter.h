#pragma once

#include <cstdint>
#include <string>
#include <tuple>
#include <utility>

#include "platform/attributelog/AttributeLogReactor.h"

namespace Orb {

/// Streams trees of entities to one reader: first the state, then every change as it happens, see
/// AttributeLogFormat. What the declarations of the roots lead to is in the log: attributes,
/// collections of values, and members whose constructor arguments are their key alone.
///
/// Does nothing but watch, and keeps the roots alive. The sink must outlive it.
template <typename... Roots>
class AttributeLogWriter {
  public:
    /// Logs the present state.
    explicit AttributeLogWriter(AttributeLogSink& sink, const Ptr<Roots>&... roots)
        : recorder_(sink) {
        std::string body;
        body += static_cast<char>(AttributeLogFormat::Kind::roots);
        body += static_cast<char>(sizeof...(Roots));
        (appendLogString(body, Roots::orbTypeName), ...);
        recorder_.record(body);
        std::uint8_t number = 0;
        ((std::get<Root<Roots>>(roots_).watch(&recorder_, number++, roots)), ...);
        recorder_.record(AttributeLogFormat::Kind::endOfState);
        sink.stateIsWritten();
    }
    AttributeLogWriter(const AttributeLogWriter&) = delete;
    AttributeLogWriter& operator=(const AttributeLogWriter&) = delete;

    /// Ends the log; what happens from now on is not in it.
    void finish() {
        (std::get<Root<Roots>>(roots_).unwatch(), ...);
        recorder_.record(AttributeLogFormat::Kind::endOfLog);
    }

  private:
    template <typename T>
    class Root final : public AttributeLogPlace {
      public:
        void watch(AttributeLogRecorder* recorder, std::uint8_t number, const Ptr<T>& root) {
            number_ = number;
            reactor_ = makePtr<AttributeLogReactor<T>>(recorder,
                                                       static_cast<const AttributeLogPlace*>(this),
                                                       AttributeId{0}, Ptr<const T>(root));
            reactor_->recordState();
        }
        void unwatch() { reactor_ = nullptr; }
        void appendPath(std::string& body) const override {
            body += static_cast<char>(AttributeLogFormat::Kind::change);
            body += static_cast<char>(number_);
        }

      private:
        std::uint8_t number_ = 0;
        Ptr<AttributeLogReactor<T>> reactor_;
    };

    AttributeLogRecorder recorder_;
    std::tuple<Root<Roots>...> roots_;
};

} // namespace Orb
