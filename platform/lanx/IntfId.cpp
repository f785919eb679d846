#include "platform/lanx/IntfId.h"

#include <string>
#include <unordered_set>

#include "platform/orb/value/Error.h"

namespace Lanx {

/// All records. Nodes of the set never move, which is what an IntfId relies on.
class IntfId::Table {
  public:
    const Record* record(std::string_view name) {
        const auto found = records_.find(name);
        return &*(found != records_.end()
                      ? found
                      : records_.insert(Record{std::string(name), Orb::hashOf(name)}).first);
    }

    /// Never destroyed, so that ids in objects of static lifetime stay valid to the end.
    static Table& instance() {
        static Table& table = *new Table;
        return table;
    }

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return Orb::hashOf(name); }
        std::size_t operator()(const Record& record) const { return record.hash; }
    };
    struct Equal {
        using is_transparent = void;
        static std::string_view name(std::string_view name) { return name; }
        static std::string_view name(const Record& record) { return record.name; }
        template <typename Left, typename Right>
        bool operator()(const Left& left, const Right& right) const {
            return name(left) == name(right);
        }
    };

    std::unordered_set<Record, Hash, Equal> records_;
};

IntfId::IntfId(std::string_view name)
    : record_(name.empty() ? nullptr : Table::instance().record(name)) {}

IntfId IntfId::fromString(std::string_view text) {
    if (text.size() > maxLength) {
        throw Orb::RangeError("an interface's name has at most " + std::to_string(maxLength)
                              + " bytes");
    }
    return IntfId(text);
}

} // namespace Lanx
