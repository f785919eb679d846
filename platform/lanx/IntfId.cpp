#include "platform/lanx/IntfId.h"

#include <string>
#include <unordered_set>

#include "platform/orb/value/Assert.h"
#include "platform/orb/value/Error.h"

namespace Lanx {

// Set to zero before anything else runs, so that ids may be made at any time.
constinit std::array<IntfId::Record*, IntfId::maxPages> IntfId::pages_{};

/// The numbers of all names.
class IntfId::Table {
  public:
    std::uint32_t number(std::string_view name) {
        const std::uint32_t present = known(name);
        return present != 0 ? present : add(name);
    }
    /// 0 for a name that has no record.
    std::uint32_t known(std::string_view name) const {
        const auto found = numbers_.find(name);
        return found != numbers_.end() ? *found : 0;
    }

    /// Never destroyed, so that ids in objects of static lifetime stay valid to the end.
    static Table& instance() {
        static Table& table = *new Table;
        return table;
    }

  private:
    static const Record& recordOf(std::uint32_t number) {
        return pages_[number / recordsPerPage][number % recordsPerPage];
    }

    /// Not noexcept: a set whose hash might throw keeps the hashes, so that a search looks at no
    /// record but that of its name.
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return Orb::hashOf(name); }
        std::size_t operator()(std::uint32_t number) const { return recordOf(number).hash; }
    };
    struct Equal {
        using is_transparent = void;
        static std::string_view name(std::string_view name) { return name; }
        static std::string_view name(std::uint32_t number) { return recordOf(number).name; }
        template <typename Left, typename Right>
        bool operator()(const Left& left, const Right& right) const {
            return name(left) == name(right);
        }
    };

    std::uint32_t add(std::string_view name) {
        const auto number = static_cast<std::uint32_t>(numbers_.size() + 1);
        ORB_ASSERT(number / recordsPerPage < maxPages, "IntfId::number < 2^24");
        Record*& page = pages_[number / recordsPerPage];
        if (page == nullptr) {
            page = new Record[recordsPerPage];
        }
        page[number % recordsPerPage] = Record{std::string(name), Orb::hashOf(name)};
        numbers_.insert(number);
        return number;
    }

    std::unordered_set<std::uint32_t, Hash, Equal> numbers_;
};

IntfId::IntfId(std::string_view name)
    : number_(name.empty() ? 0 : Table::instance().number(name)) {}

IntfId IntfId::known(std::string_view name) {
    IntfId id;
    id.number_ = Table::instance().known(name);
    return id;
}

IntfId IntfId::fromString(std::string_view text) {
    if (text.size() > maxLength) {
        throw Orb::RangeError("an interface's name has at most " + std::to_string(maxLength)
                              + " bytes");
    }
    return IntfId(text);
}

} // namespace Lanx
