#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <directnet/tables.h>

/// directnet/tables.h for C++17: the handle owns itself, and errors are exceptions. The records are
/// those of the C header, which says what everything means.
namespace directnet {

/// A folder or table could not be read; the text says which and why.
class TablesError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class Tables {
  public:
    /// @param flags    0 or DIRECTNET_TABLES_WAIT
    /// @throws TablesError
    explicit Tables(const std::string& folder, unsigned flags = 0) {
        std::string error(maxError, '\0');
        handle_.reset(directnet_tables_open(folder.c_str(), flags, error.data(), error.size()));
        if (handle_ == nullptr) {
            throw TablesError(error.c_str());
        }
    }

    /// Brings the view to the present; `onChange(const directnet_change&)` is called with each
    /// change. Once it has thrown, it is called no more and the exception goes on when the view is
    /// at the present; the changes that were not told are not told later.
    ///
    /// @return how many changes there were
    /// @throws TablesError  with the other tables brought to the present all the same
    template <typename OnChange>
    std::int64_t update(OnChange&& onChange) {
        Call<OnChange> call{onChange, nullptr};
        const std::int64_t count =
            directnet_tables_update(handle_.get(), &Call<OnChange>::change, &call);
        call.finish();
        return checked(count);
    }
    std::int64_t update() { return checked(directnet_tables_update(get(), nullptr, nullptr)); }

    int descriptor() const { return directnet_tables_descriptor(get()); }

    /// Whether an update may find something, waiting for it up to that long, or for ever.
    bool wait(std::optional<std::chrono::milliseconds> timeout = std::nullopt) {
        const int milliseconds = timeout ? static_cast<int>(timeout->count()) : -1;
        return checked(directnet_tables_wait(get(), milliseconds)) == 1;
    }

    std::vector<directnet_vrf> vrfs() const {
        std::vector<directnet_vrf> all(directnet_tables_vrf_count(get()));
        for (std::size_t n = 0; n < all.size(); ++n) {
            directnet_tables_vrf_at(get(), n, &all[n]);
        }
        return all;
    }
    std::optional<directnet_vrf> vrf(std::uint32_t id) const {
        return given<directnet_vrf>(directnet_tables_vrf_by_id, id);
    }
    std::optional<directnet_vrf> vrf(const std::string& name) const {
        return given<directnet_vrf>(directnet_tables_vrf_by_name, name.c_str());
    }

    /// Calls `f(record)` for each; if it returns something, false ends the walk.
    template <typename F>
    void eachRoute(F&& f, std::uint32_t vrfId = DIRECTNET_ALL_VRFS,
                   int family = DIRECTNET_BOTH_FAMILIES) const {
        each<directnet_route>(directnet_tables_each_route, f, vrfId, family);
    }
    template <typename F>
    void eachVia(F&& f, std::uint32_t vrfId = DIRECTNET_ALL_VRFS,
                 int family = DIRECTNET_BOTH_FAMILIES) const {
        each<directnet_via>(directnet_tables_each_via, f, vrfId, family);
    }
    template <typename F>
    void eachViaSet(F&& f, std::uint32_t vrfId = DIRECTNET_ALL_VRFS,
                    int family = DIRECTNET_BOTH_FAMILIES) const {
        each<directnet_via_set>(directnet_tables_each_via_set, f, vrfId, family);
    }
    template <typename F>
    void eachLeak(F&& f, std::uint32_t sourceVrfId = DIRECTNET_ALL_VRFS,
                  int family = DIRECTNET_BOTH_FAMILIES) const {
        each<directnet_leak>(directnet_tables_each_leak, f, sourceVrfId, family);
    }

    directnet_sizes sizes() const {
        directnet_sizes sizes;
        directnet_tables_sizes(get(), &sizes);
        return sizes;
    }

    std::optional<directnet_route> find(std::uint32_t vrfId, const directnet_prefix& prefix) const {
        return given<directnet_route>(directnet_tables_find, vrfId, &prefix);
    }
    std::optional<directnet_route> match(std::uint32_t vrfId, int family,
                                         const void* address) const {
        return given<directnet_route>(directnet_tables_match, vrfId, family, address);
    }
    std::optional<directnet_hop> resolve(const directnet_route& route) const {
        return given<directnet_hop>(directnet_tables_resolve, &route);
    }

    directnet_writer writer(directnet_record_kind kind = DIRECTNET_ROUTE) const {
        directnet_writer writer;
        directnet_tables_writer(get(), kind, &writer);
        return writer;
    }

    /// For functions of the C header that have no equal here.
    directnet_tables* get() const { return handle_.get(); }

  private:
    static constexpr std::size_t maxError = 512;

    struct Close {
        void operator()(directnet_tables* tables) const { directnet_tables_close(tables); }
    };

    /// Carries a callable through C, and an exception of it back.
    template <typename F>
    struct Call {
        F& f;
        std::exception_ptr thrown;

        static void change(const directnet_change* change, void* context) {
            auto& call = *static_cast<Call*>(context);
            call.run([&] { call.f(*change); });
        }

        template <typename Record>
        static int record(const Record* record, void* context) {
            auto& call = *static_cast<Call*>(context);
            bool goesOn = true;
            call.run([&] {
                if constexpr (std::is_void_v<decltype(call.f(*record))>) {
                    call.f(*record);
                } else {
                    goesOn = call.f(*record);
                }
            });
            return goesOn && call.thrown == nullptr ? 0 : 1;
        }

        template <typename Step>
        void run(Step&& step) {
            if (thrown == nullptr) {
                try {
                    step();
                } catch (...) {
                    thrown = std::current_exception();
                }
            }
        }

        void finish() const {
            if (thrown != nullptr) {
                std::rethrow_exception(thrown);
            }
        }
    };

    template <typename Record, typename Walk, typename F>
    void each(Walk walk, F& f, std::uint32_t vrfId, int family) const {
        Call<F> call{f, nullptr};
        walk(get(), vrfId, family, &Call<F>::template record<Record>, &call);
        call.finish();
    }

    template <typename Record, typename Ask, typename... Arguments>
    std::optional<Record> given(Ask ask, Arguments... arguments) const {
        Record record;
        return ask(get(), arguments..., &record) == 1 ? std::optional(record) : std::nullopt;
    }

    template <typename Result>
    Result checked(Result result) const {
        if (result < 0) {
            throw TablesError(directnet_tables_error(get()));
        }
        return result;
    }

    std::unique_ptr<directnet_tables, Close> handle_;
};

/// A prefix as "10.1.1.0/24"; empty if it is none.
inline std::string toString(const directnet_prefix& prefix) {
    char text[DIRECTNET_PREFIX_TEXT_SIZE];
    directnet_tables_prefix_text(&prefix, text, sizeof text);
    return text;
}

inline std::optional<directnet_prefix> prefixFrom(const std::string& text) {
    directnet_prefix prefix;
    return directnet_tables_prefix_parse(text.c_str(), &prefix) == 1 ? std::optional(prefix)
                                                                     : std::nullopt;
}

} // namespace directnet
